// What the log files of one upload share: the services that take the records, the time for it, and what is lost.
#pragma once

#include <cstdint>
#include <string>

#include "Deadline.h"
#include "FirewallLogEntry.h"
#include "Handle.h"
#include "HandlerCounterBlock.h"

namespace wrb {

// Where the records go. Each function returns 1 when it has taken the record; else the cause is in GetLastError.
struct CfwLogTargets {
    int (*agentClient)(const FirewallLogEntry& entry) noexcept;  // a failure is only logged
    int (*logPool)(const FirewallLogEntry& entry) noexcept;      // a failure gives the result -2
};

// A hung service costs an upload one time-out, not one a record: after the first it is left out. One thread.
class CfwUpload {
  public:
    // To the services, within "INI_SERVER_SECTION/UploadSeconds" of the server INI.
    explicit CfwUpload(const std::wstring& uid);
    CfwUpload(const std::wstring& uid, const CfwLogTargets& targets, uint32_t milliseconds);

    const std::wstring& Uid() const noexcept { return m_uid; }
    bool SendToAgentClient(const FirewallLogEntry& entry) noexcept;
    bool SendToLogPool(const FirewallLogEntry& entry) noexcept;

    // True when the time is up, or the server has been stopping for five seconds: no record is sent any more.
    bool IsOver() noexcept;

    Undelivered lost;

  private:
    const std::wstring m_uid;
    CfwLogTargets m_targets;  // a null function: left out
    const KernelHandle m_stopEvent;
    Deadline m_end;
    Deadline m_nextLook{0};
    bool m_isStopping = false;
    bool m_isOver = false;
};

}  // namespace wrb
