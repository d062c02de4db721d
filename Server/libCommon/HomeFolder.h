// The server's home folder: the INI files, the alert texts and the folder Temp lie under it.
#pragma once

#include <cstddef>
#include <string>

namespace wrb {

// Room for the longest home folder and its terminator.
inline constexpr std::size_t kHomeFolderCapacity = 260;

// The folder that the installation wrote into the registry (ServerRegistry.h), with a backslash added when it ends in
// none. Without it, or when it is too long, the folder of the running program. Always ends in a backslash and has at
// most kHomeFolderCapacity - 1 characters; empty when even the program's folder is longer. Read afresh at every call;
// any thread.
std::wstring HomeFolder();

// The folder of the running program with a backslash at its end; empty when the system does not tell.
std::wstring ProgramFolder();

}  // namespace wrb
