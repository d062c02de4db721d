// One firewall log file of an agent (PfwLogRecord.h), forwarded record by record to the two services that take it.
#pragma once

#include <cstdint>
#include <string>

#include "FirewallLogEntry.h"
#include "HandlerCounterBlock.h"

namespace wrb {

// Where the records go. Each function returns 1 when it has taken the record.
struct CfwLogTargets {
    int (*agentClient)(const FirewallLogEntry& entry) noexcept;  // a failure is only logged
    int (*logPool)(const FirewallLogEntry& entry) noexcept;      // a failure gives the result -2
};

// processCFWLogFile with other targets. Adds to `lost` what they have not taken; records with wrong markers do not
// count. Of a file that cannot be opened all records count, by its size. Memory does not grow with the file. Any
// thread, each with a file of its own.
int32_t ForwardCfwLogFile(const std::wstring& uid, const wchar_t* fileName, const CfwLogTargets& targets,
                          Undelivered& lost);

}  // namespace wrb

// Forwards every record of the file to the central-management agent and to the log pool. Returns -2 when a record had
// wrong markers or did not reach the log pool, otherwise 1: also without a file, with an unreadable one and with one of
// an unknown version. Adds to `lost` what the two have not taken, also when it throws, which it does for lack of memory
// only.
int32_t processCFWLogFile(const std::wstring& uid, const wchar_t* fileName, wrb::Undelivered* lost = nullptr);
