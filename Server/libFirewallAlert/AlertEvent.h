// The event of a firewall alert in the Windows event log.
#pragma once

#include <cstdint>
#include <string>

namespace wrb {

// The texts that EventMessages.mc puts in the places %1, %2 and %3.
struct AlertEvent {
    std::wstring windowSeconds;
    std::wstring sums;
    std::wstring timeStamp;
};

// Returns 0 or the Windows error. Any thread.
uint32_t WriteAlertEvent(const AlertEvent& event);

}  // namespace wrb
