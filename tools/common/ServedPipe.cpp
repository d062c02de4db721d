#include "ServedPipe.h"

#include <windows.h>

#include "PipePath.h"

namespace wrb {

bool IsServed(const wchar_t* pipe) noexcept {
    constexpr DWORD kShortestWait = 1;  // 0 would mean the time-out that the pipe's server has set
    wchar_t path[MAX_PATH];
    return FormatPipePath(path, MAX_PATH, pipe) &&
           (WaitNamedPipeW(path, kShortestWait) || GetLastError() != ERROR_FILE_NOT_FOUND);
}

}  // namespace wrb
