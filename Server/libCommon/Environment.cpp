#include "Environment.h"

#include <windows.h>

namespace wrb {

std::optional<std::wstring> ReadEnvironment(const wchar_t* name) {
    std::wstring value;
    for (;;) {
        // The length is 0 for an empty variable and for a missing one. Only the last error differs.
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
        if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
            return std::nullopt;
        }
        const bool whole = length < value.size() || length == 0;
        value.resize(length);
        if (whole) {
            return value;
        }
    }
}

}  // namespace wrb
