#include "RunningProgram.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <psapi.h>

#include "Handle.h"
#include "OwnModule.h"
#include "StopEvent.h"

namespace wrb {
namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;  // of a FILETIME

int64_t Ticks(const FILETIME& time) {
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

}  // namespace

std::optional<RunningProgram> FindRunningProgram(const wchar_t* stopEvent) {
    RunningProgram program;
    program.processId = RunningProcess(stopEvent);
    if (program.processId == 0) {
        return std::nullopt;
    }
    const KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, program.processId));
    FILETIME start{};
    FILETIME end{};
    FILETIME kernel{};
    FILETIME user{};
    if (!process || !GetProcessTimes(process.Get(), &start, &end, &kernel, &user)) {
        return std::nullopt;
    }
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    program.upSeconds = (Ticks(now) - Ticks(start)) / kTicksPerSecond;
    PROCESS_MEMORY_COUNTERS memory{};
    DWORD handles = 0;
    if (GetProcessMemoryInfo(process.Get(), &memory, sizeof memory)) {
        program.bytes = memory.PagefileUsage;
    }
    if (GetProcessHandleCount(process.Get(), &handles)) {
        program.handles = handles;
    }
    constexpr DWORD kPathCapacity = 32768;  // the longest path that Windows has
    std::wstring path(kPathCapacity, L'\0');
    DWORD length = kPathCapacity;
    if (QueryFullProcessImageNameW(process.Get(), 0, path.data(), &length)) {
        path.resize(length);
        program.version = ReadModuleVersion(path).productVersion;
        program.path = std::move(path);
    }
    return program;
}

}  // namespace wrb
