// Waits for what no event tells.
#pragma once

#include <windows.h>

#include <cstdint>

namespace wrb {

// Calls `isDone` until it returns true, with a pause after each call that does not. False: not in time. It is called
// once at least.
template <typename IsDone>
bool PollUntil(const IsDone& isDone, uint64_t milliseconds, uint32_t pauseMilliseconds) {
    const uint64_t deadline = GetTickCount64() + milliseconds;
    while (!isDone()) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(pauseMilliseconds);
    }
    return true;
}

}  // namespace wrb
