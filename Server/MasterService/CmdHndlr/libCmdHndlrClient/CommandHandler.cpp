#include "CommandHandler.h"

#include <string_view>

#include "CmdProtocol.h"
#include "CounterScope.h"
#include "cmdhl_Reply.h"
#include "cmdhm_Common.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {
namespace {

// The log numbers its slots from here: the table's first row has slot 10.
constexpr uint32_t kFirstResultSlot = 10;

std::wstring WithName(std::wstring_view pattern, const wchar_t* name) {
    std::wstring text;
    for (const wchar_t character : pattern) {
        character == L'*' ? text.append(name) : text.append(1, character);
    }
    return text;
}

struct Frame {
    const wchar_t* name;
    RequestLog log;
    const wchar_t* module;
};

Frame IniFrame(const wchar_t* name) {
    return {name, kReported, kRqIni};
}

void LogOf(const Frame& frame, const wchar_t* what, const std::wstring& text) {
    WRB_LOG_FROM(kLogDebug8, frame.module, __LINE__, L"%s%s:[%s]", WithName(frame.log.head, frame.name).c_str(), what,
                 text.c_str());
}

// `make` gets the output to fill, and takes what follows the reply pipe from the message.
template <typename Make>
void Answer(CommandSlot slot, const Frame& frame, CCmdProtocol& message, Make&& make) {
    std::wstring replyPipe;
    std::wstring output;
    {
        const CounterCall call(static_cast<uint32_t>(slot));
        message >> replyPipe;
        make(output);
        LogOf(frame, L"output", output);
    }
    if (!Reply(replyPipe.c_str(), output) && frame.log.failedReply != nullptr) {
        WRB_LOG_FROM(frame.log.failedLevel, frame.module, __LINE__, L"%s",
                     WithName(frame.log.failedReply, frame.name).c_str());
    }
}

// The same for `logic(output, uid)`.
template <typename Logic>
void AnswerAgent(CommandSlot slot, const Frame& frame, CCmdProtocol& message, Logic&& logic) {
    Answer(slot, frame, message, [&](std::wstring& output) {
        std::wstring uid;
        message >> uid;
        LogOf(frame, L"uid", uid);
        logic(output, uid.c_str());
    });
}

template <typename Store>
void Apply(CommandSlot slot, const Update& update, CCmdProtocol& message, Store&& store) {
    bool stored = false;
    {
        CounterCall call(static_cast<uint32_t>(slot));
        std::wstring uid;
        message >> uid;
        stored = store(message, uid.c_str());
        call.ReportResult(stored);
    }
    WRB_LOG_FROM(kLogDebug8, kOnCfg, __LINE__, update.logsSlot ? L"[%s] result =[%d] slot =[%d]" : L"[%s] result =[%d]",
                 update.name, stored, static_cast<uint32_t>(slot) + kFirstResultSlot);
}

void Run(CommandSlot slot, const Request& request, CCmdProtocol& message) {
    AnswerAgent(slot, {request.name, request.log, request.module}, message, request.getter);
}

void Run(CommandSlot slot, const ScanRequest& request, CCmdProtocol& message) {
    const ScanGroup& group = FindScanGroup(request.type, request.kind);
    AnswerAgent(slot, {request.name, request.log, kRqCfg}, message,
                [&](std::wstring& output, const wchar_t* uid) { GetAndExportScanGroup(group, output, uid, false); });
}

void Run(CommandSlot slot, const FieldRequest& request, CCmdProtocol& message) {
    AnswerAgent(slot, {request.name, request.log, request.module}, message,
                [&](std::wstring& output, const wchar_t* uid) { request.getter(output, uid, message); });
}

void Run(CommandSlot slot, const ServerRequest& request, CCmdProtocol& message) {
    Answer(slot, IniFrame(request.name), message, request.getter);
}

void Run(CommandSlot slot, const SectionRequest& request, CCmdProtocol& message) {
    Answer(slot, IniFrame(request.name), message,
           [&](std::wstring& output) { GetIniSection(output, request.section); });
}

void Run(CommandSlot slot, const Update& update, CCmdProtocol& message) {
    Apply(slot, update, message, update.setter);
}

void Run(CommandSlot slot, const ScanUpdate& update, CCmdProtocol& message) {
    const ScanGroup& group = FindScanGroup(update.type, update.kind);
    Apply(slot, {update.name, nullptr}, message,
          [&](CCmdProtocol& fields, const wchar_t* uid) { return SetScanGroup(group, fields, uid, false, false, 0); });
}

void Run(CommandSlot, const Written& handler, CCmdProtocol& message) {
    handler.function(message);
}

}  // namespace

void RunHandler(CommandSlot slot, const CommandHandler& handler, CCmdProtocol& message) {
    std::visit([&](const auto& shape) { Run(slot, shape, message); }, handler);
}

}  // namespace wrb
