#include "cmdlog_OutputCmd.h"

#include "CallGuard.h"
#include "Clock.h"
#include "DebugLog.h"
#include "LogId.h"
#include "LogPoolRecord.h"
#include "MsgSerializer.h"
#include "ServiceClient.h"
#include "ServicePipes.h"

// Log lines name the module that this file was part of.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/CmdAPI/libCmdAPILogPool/cmdlog_OutputCmd.cpp"

namespace {

int SendToPool(CMsgSerializer& message) {
    constexpr wrb::Service kService = wrb::ServiceWithPipeLines(wrb::kLogPoolPipe);
    return wrb::SendToService(kService, WRB_HERE, message, wrb::SentBlock::Freed);
}

int SendRow(const wchar_t* command, const std::wstring& text) {
    CMsgSerializer message(command);
    message << text;
    return SendToPool(message);
}

}  // namespace

int cmdlog_OutputCmd(CMsgSerializer& message) noexcept {
    return wrb::GuardCall(WRB_HERE, L"cmdlog_OutputCmd", [&] { return SendToPool(message); });
}

int cmdlog_SendCfwLog(const wrb::FirewallLogEntry& entry) noexcept {
    return wrb::GuardCall(WRB_HERE, L"cmdlog_SendCfwLog", [&] { return SendRow(kSendCfwLog, wrb::CfwLogRow(entry)); });
}

int dbSetRestoreLogW(const wchar_t* uid, int32_t logType, int32_t result) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbSetRestoreLogW", [&] {
        wchar_t logId[wrb::kLogIdCapacity];
        if (!cwCreateGUID(logId, wrb::kLogIdCapacity)) {
            WRB_LOG(kLogError, L"%s - Fail to create log ID", L"dbSetRestoreLogW");
            return 0;
        }
        const wrb::RestoreLog log = {logId, uid, wrb::SystemClock().CalendarSeconds(), logType, result};
        std::wstring text;
        if (const int error = wrb::RestoreLogRow(log, text); error != 0) {
            WRB_LOG(kLogError, L"%s - Fail to format log into Json format, err=%d", L"dbSetRestoreLogW", error);
            return 0;
        }
        return SendRow(kSendRestoreLog, text);
    });
}
