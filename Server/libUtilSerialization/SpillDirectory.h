// The folders for messages that are too large for memory, and the rule for the path that a received message names.
//
// A message in file mode names a file that its receiver reads and then deletes, so the path comes from another process
// and is not to be trusted: a local program could otherwise have a service read, lock or delete any file that the
// service can reach, or connect to a share or a pipe. Both sides therefore agree on a rule: the file lies directly in a
// spill directory and has the name that the system gives a temporary file with our prefix. Any account may be granted
// such a file (see SpillFile), so the bodies that pass through here are no secret on the machine.
//
// The spill directories are, in order of preference: the "temp" folder of the server's home folder, the account's
// internet cache, the account's temporary folder. Sender and receiver find the same ones when the server is
// installed ("Local_Path" is set) or when they run under the same account. Silent; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wrb {

// The spill directories of this account, in order of preference, each with a backslash at its end. Those that the
// system cannot name are left out. None need exist.
std::vector<std::wstring> SpillDirectories();

// Makes a new, empty file in the first spill directory that lets it, and returns its full path; empty when none does
// (GetLastError has the cause of the last).
std::wstring CreateFileInSpillDirectory();

// How long opening, granting and deleting such a file may take each: another process can hold them up with an oplock.
// Then they fail with ERROR_OPERATION_ABORTED (995).
inline constexpr uint32_t kSpillFileMilliseconds = 10'000;

// Keeps the last error.
void DeleteSpillFile(const std::wstring& path) noexcept;

// The path in its full form when the rule above allows it, else empty. Looks at the text alone, never at the disk.
std::wstring AcceptedSpillPath(const std::wstring& path);

}  // namespace wrb
