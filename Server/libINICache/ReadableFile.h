// Reads of a file by functions of the system that do not tell a failure from an empty file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace wrb {

// Calls `read`, which reads the file by such functions, with the file held open, so that nobody can lock it against
// them. Returns 0, also when there is no such file. Otherwise the system's error: the file cannot be opened or read, or
// not within `milliseconds` (ERROR_OPERATION_ABORTED). What `read` has found is then of no use; it may not have been
// called.
uint32_t WhileReadable(const std::wstring& path, uint32_t milliseconds, const std::function<void()>& read);

}  // namespace wrb
