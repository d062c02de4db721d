// A program of the server that runs on this machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace wrb {

struct RunningProgram {
    uint32_t processId = 0;
    std::wstring path;
    std::wstring version;   // of its version resource; empty: it has none
    int64_t upSeconds = 0;  // since its start
    uint64_t bytes = 0;     // of private memory
    uint32_t handles = 0;   // 0: the system does not tell
};

// The program that owns the stop event. Nothing when it does not run or this account may not look at it.
std::optional<RunningProgram> FindRunningProgram(const wchar_t* stopEvent);

}  // namespace wrb
