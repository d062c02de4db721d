#include "CfwUpload.h"

#include "DebugLog.h"
#include "IniValues.h"
#include "QmAgentClient.h"
#include "ServerStopEvent.h"
#include "cmdlog_OutputCmd.h"

namespace wrb {
namespace {

constexpr wchar_t kFunction[] = L"processCFWLogFile";
constexpr uint32_t kDefaultSeconds = 600;
constexpr uint32_t kMostSeconds = 3600;
constexpr uint32_t kStopMilliseconds = 5'000;
constexpr uint32_t kLookMilliseconds = 100;  // between two looks at the stop event, which cost a call of the system

// Only a time-out leaves a service out: every other failure comes at once, and the service may be back soon.
template <typename Target>
bool Send(Target& target, const wchar_t* name, const FirewallLogEntry& entry) noexcept {
    SetLastError(ERROR_SUCCESS);
    if (target == nullptr || target(entry) == 1) {
        return target != nullptr;
    }
    if (GetLastError() == ERROR_SEM_TIMEOUT) {
        target = nullptr;
        WRB_LOG(kLogWarning, L"%s - left out for the rest of the upload, a record was not taken in time: %s, uid=%s",
                kFunction, name, entry.uid);
    }
    return false;
}

}  // namespace

CfwUpload::CfwUpload(const std::wstring& uid)
    : CfwUpload(uid, {qmaSendFirewallLog, cmdlog_SendCfwLog},
                ServerIniNumber("UploadSeconds", kDefaultSeconds, kMostSeconds) * 1000) {}

CfwUpload::CfwUpload(const std::wstring& uid, const CfwLogTargets& targets, uint32_t milliseconds)
    : m_uid(uid),
      m_targets(targets),
      m_stopEvent(OpenEventW(SYNCHRONIZE, FALSE, kServerStopEvent)),
      m_end(milliseconds) {}

bool CfwUpload::SendToAgentClient(const FirewallLogEntry& entry) noexcept {
    return Send(m_targets.agentClient, L"central-management agent", entry);
}

bool CfwUpload::SendToLogPool(const FirewallLogEntry& entry) noexcept {
    return Send(m_targets.logPool, L"log pool", entry);
}

bool CfwUpload::IsOver() noexcept {
    if (m_isOver || m_nextLook.Remaining() != 0) {
        return m_isOver;
    }
    m_nextLook = Deadline(kLookMilliseconds);
    if (!m_isStopping && m_stopEvent && WaitForSingleObject(m_stopEvent.Get(), 0) == WAIT_OBJECT_0) {
        m_isStopping = true;
        m_end = m_end.Remaining() > kStopMilliseconds ? Deadline(kStopMilliseconds) : m_end;
    }
    m_isOver = m_end.Remaining() == 0;
    if (m_isOver) {
        WRB_LOG(kLogWarning, L"%s - the time for the upload is over, no further record is sent, uid=%s", kFunction,
                m_uid.c_str());
    }
    return m_isOver;
}

}  // namespace wrb
