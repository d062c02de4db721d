#include "ReadableFile.h"

#include <windows.h>

#include "CancelAfter.h"
#include "Handle.h"

namespace wrb {
namespace {

// A part of the file may be locked.
DWORD ReadThrough(HANDLE file) noexcept {
    char piece[4096];
    DWORD bytes = 0;
    do {
        if (!ReadFile(file, piece, sizeof piece, &bytes, nullptr)) {
            return GetLastError();
        }
    } while (bytes != 0);
    return ERROR_SUCCESS;
}

DWORD ErrorOf(HANDLE file) noexcept {
    const DWORD error = file != INVALID_HANDLE_VALUE ? ReadThrough(file) : GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ERROR_SUCCESS : error;
}

}  // namespace

uint32_t WhileReadable(const std::wstring& path, uint32_t milliseconds, const std::function<void()>& read) {
    const CancelAfter limit(milliseconds);
    if (!limit) {
        return limit.Error();
    }
    // Shared as by the profile functions: what keeps them out keeps this call out.
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
    if (const DWORD error = ErrorOf(file.Get()); error != ERROR_SUCCESS) {
        return error;
    }
    read();
    return limit.IsOver() ? ERROR_OPERATION_ABORTED : ERROR_SUCCESS;
}

}  // namespace wrb
