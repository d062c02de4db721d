// How the rows of the command table are served: the shapes that a row can name, each with its data, and what runs them.
// A handler gets the message with the command's name already read and runs on the caller's thread. Its answer and the
// debug log are its only results. Any number run at once.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "CommandTable.h"
#include "DebugLog.h"
#include "ScanGroup.h"

class CCmdProtocol;

namespace wrb {

// The log texts of a request; "*" stands for the handler's name. People search for them, so each request keeps its own.
struct RequestLog {
    const wchar_t* head;  // of the lines "uid:[...]" and "output:[...]", at level 8
    const wchar_t* failedReply =
        nullptr;  // the line of an answer that cannot be sent, after the pipe's own; null: none
    uint32_t failedLevel = kLogError;
};
inline constexpr RequestLog kPlain = {L"*: "};
inline constexpr RequestLog kBracketed = {L"[*] "};
inline constexpr RequestLog kReported = {L"*: ", L"* - cmdhl_OutputCommand failed."};
inline constexpr RequestLog kDashed = {L"* - ", L"* - cmdhl_OutputCommand failed."};
inline constexpr RequestLog kTwice = {L"* - *: ", L"* - *: cmdhl_OutputCommand failed."};
inline constexpr RequestLog kWebThreat = {L"*: ", L"*: cmdhl_OutputCommand failed. ", kLogDebug8};

// The source modules that log lines name.
#define WRB_HANDLER_MODULE(name) L"Server\\MasterService\\CmdHndlr\\libCmdHndlrClient\\" name L".cpp"
inline constexpr wchar_t kRqCfg[] = WRB_HANDLER_MODULE(L"cmdhl_RqCfg");
inline constexpr wchar_t kRqIni[] = WRB_HANDLER_MODULE(L"cmdhl_RqINI");
inline constexpr wchar_t kOnCfg[] = WRB_HANDLER_MODULE(L"cmdhl_OnCfg");
inline constexpr wchar_t kOthers[] = WRB_HANDLER_MODULE(L"cmdhl_Others");
#undef WRB_HANDLER_MODULE

// Fills `output` for the agent `uid`. An empty uid stands for the server as a whole in scan requests, and for an
// unknown agent in setting bundles. False: nothing was found, and `output` is empty.
using Getter = bool (*)(std::wstring& output, const wchar_t* uid);

// The same for a request with more fields than the uid, which it takes from `fields`.
using FieldGetter = bool (*)(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields);

// A Getter that leaves the agent's "changed" bit as it is.
template <bool (*getter)(std::wstring& output, const wchar_t* uid, bool bResetCfgFlag)>
bool KeepChanges(std::wstring& output, const wchar_t* uid) {
    return getter(output, uid, false);
}

// Stores the fields of `message` for the agent `uid`. False when it could not.
using Setter = bool (*)(CCmdProtocol& message, const wchar_t* uid);

// Requests: reply pipe and uid in, a text out to the reply pipe.
struct Request {
    const wchar_t* name;
    RequestLog log;
    const wchar_t* module;
    Getter getter;
};
struct FieldRequest {
    const wchar_t* name;
    RequestLog log;
    const wchar_t* module;
    FieldGetter getter;
};
struct ScanRequest {
    const wchar_t* name;
    RequestLog log;
    ScanType type;
    ScanGroupKind kind;
};

// Requests about the server itself: without a uid, and without the line that shows one. They log as kReported, in
// kRqIni.
struct ServerRequest {
    const wchar_t* name;
    bool (*getter)(std::wstring& output);
};
struct SectionRequest {
    const wchar_t* name;
    const wchar_t* section;  // of the scan INI
};

// Updates: uid and settings in, no answer.
struct Update {
    const wchar_t* name;
    Setter setter;
    bool logsSlot = true;
};
struct ScanUpdate {
    const wchar_t* name;
    ScanType type;
    ScanGroupKind kind;
};

// A function that does everything, counting included.
struct Written {
    void (*function)(CCmdProtocol& message);
};

using CommandHandler =
    std::variant<Request, FieldRequest, ScanRequest, ServerRequest, SectionRequest, Update, ScanUpdate, Written>;

// Serves one command. A request is timed without its reply: a slow reader is not a slow command. An empty answer is
// sent too. Passes on what the handler throws, and the E_FAIL of a process without counters.
void RunHandler(CommandSlot slot, const CommandHandler& handler, CCmdProtocol& message);

}  // namespace wrb
