#include "CommandHandler.h"

#include <string_view>

#include "CmdProtocol.h"
#include "CounterScope.h"
#include "cmdhl_Reply.h"
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

template <typename Logic>
void Answer(CommandSlot slot, const Request& request, CCmdProtocol& message, Logic&& logic) {
    const RequestLog& log = request.log;
    std::wstring replyPipe;
    std::wstring output;
    {
        const CounterCall call(static_cast<uint32_t>(slot));
        std::wstring uid;
        message >> replyPipe >> uid;
        WRB_LOG_FROM(kLogDebug8, request.module, __LINE__, L"%suid:[%s]", WithName(log.head, request.name).c_str(),
                     uid.c_str());
        logic(output, uid.c_str());
        WRB_LOG_FROM(kLogDebug8, request.module, __LINE__, L"%soutput:[%s]", WithName(log.head, request.name).c_str(),
                     output.c_str());
    }
    if (!Reply(replyPipe.c_str(), output) && log.failedReply != nullptr) {
        WRB_LOG_FROM(log.failedLevel, request.module, __LINE__, L"%s", WithName(log.failedReply, request.name).c_str());
    }
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
    Answer(slot, request, message, request.getter);
}

void Run(CommandSlot slot, const FieldRequest& request, CCmdProtocol& message) {
    Answer(slot, {request.name, request.log, request.module, nullptr}, message,
           [&](std::wstring& output, const wchar_t* uid) { request.getter(output, uid, message); });
}

void Run(CommandSlot slot, const ScanRequest& request, CCmdProtocol& message) {
    const ScanGroup& group = FindScanGroup(request.type, request.kind);
    Answer(slot, {request.name, request.log, kRqCfg, nullptr}, message,
           [&](std::wstring& output, const wchar_t* uid) { GetAndExportScanGroup(group, output, uid, false); });
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

void Run(CommandSlot, const NotBuilt&, CCmdProtocol&) {}

}  // namespace

void RunHandler(CommandSlot slot, const CommandHandler& handler, CCmdProtocol& message) {
    std::visit([&](const auto& shape) { Run(slot, shape, message); }, handler);
}

}  // namespace wrb
