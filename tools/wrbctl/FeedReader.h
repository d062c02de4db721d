// Follows a live feed until it has shown enough, or until Ctrl-C.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "Console.h"
#include "LiveFeed.h"

namespace wrb {

// Reads one record, waiting a moment for one that is being written.
template <typename Record, std::size_t kPlaces>
bool ReadRecord(const LiveFeed<Record, kPlaces>& feed, uint64_t number, Record& record) {
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        if (feed.Read(number, record)) {
            return true;
        }
        Sleep(1);
    }
    return false;
}

// Calls `show` with each record from now on while it returns true. Records that were overwritten first are counted on
// the standard error. `begin` runs once the writers write.
template <typename Record, std::size_t kPlaces, typename Begin, typename Show>
void FollowFeed(LiveFeed<Record, kPlaces>& feed, Begin begin, Show show) {
    constexpr DWORD kPauseMilliseconds = 20;
    uint64_t next = feed.Look();
    begin();
    for (Record record;; Sleep(kPauseMilliseconds)) {
        const uint64_t end = feed.Look();
        uint64_t lost = 0;
        if (end < next) {
            next = 0;  // the writing program has started anew
        }
        if (end - next > kPlaces) {
            lost = end - next - kPlaces;
            next += lost;
        }
        for (; next != end; ++next) {
            if (!ReadRecord(feed, next, record)) {
                ++lost;
            } else if (!show(record)) {
                return;
            }
        }
        if (lost != 0) {
            PrintErr("wrbctl: " + std::to_string(lost) + " were too fast to be shown\n");
        }
    }
}

}  // namespace wrb
