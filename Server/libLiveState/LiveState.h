// What the command library keeps in memory and people want to see: who uploads or waits, and the sums of the firewall
// alerts. In named shared memory, which the process that loads the library writes and others may read.
//
// The layout is fixed: little-endian, natural alignment, no pointers. A change takes a new version number. Times are
// seconds since 1970-01-01 00:00 UTC.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wrb {

inline constexpr wchar_t kLiveStateSection[] = L"Global\\Calloway_Warrenby_Live_State";
inline constexpr uint32_t kLiveStateSignature = 0x4C425257;  // the bytes "WRBL" in memory
inline constexpr uint32_t kLiveStateVersion = 1;
inline constexpr std::size_t kLiveClients = 50;  // of a list

struct LiveClient {
    wchar_t uid[37];  // with its NUL
    uint16_t unused = 0;
    uint32_t padding = 0;
    int64_t until = 0;  // the end of the upload slot, or when the client is to ask again
};
static_assert(sizeof(LiveClient) == 88);

struct LiveUploads {
    int64_t changed = 0;     // the last change; 0: no agent has asked yet
    uint32_t uploading = 0;  // clients on the list, also those beyond kLiveClients
    uint32_t waiting = 0;
    std::array<LiveClient, kLiveClients> firstUploading{};
    std::array<LiveClient, kLiveClients> firstWaiting{};
};

struct LiveAlerts {
    int64_t changed = 0;  // the last report; 0: none yet. A sum is that of the window that ended then
    uint64_t reports = 0;
    uint32_t windowSeconds = 0;
    std::array<uint32_t, 3> thresholds{};  // intrusions, firewall rules, total; 0: not watched
    std::array<uint64_t, 3> sums{};
};

struct LiveState {
    LiveUploads uploads;
    LiveAlerts alerts;
};

}  // namespace wrb
