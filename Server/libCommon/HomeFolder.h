// The server's home folder: the INI files, the alert texts and the folder Temp lie under it.
#pragma once

#include <cstddef>
#include <string>

namespace wrb {

// Room for the longest home folder and its terminator.
inline constexpr std::size_t kHomeFolderCapacity = 260;

// The INI files of the server, below the home folder.
inline constexpr wchar_t kScanIniFile[] = L"wrbscan.ini";
inline constexpr wchar_t kServerIniFile[] = L"Private\\wrbserver.ini";

// The home folder as installed: the value "Local_Path" (REG_SZ, 64-bit view) of the registry key
// HKEY_LOCAL_MACHINE\SOFTWARE\CallowaySystems\Warrenby\service\Information, as written. Empty when it is missing, of
// another type or longer than 1023 characters. Read afresh at every call; never logs; any thread.
std::wstring ReadLocalPath();

// Whether the value is there, of whatever type. Any thread.
bool HasLocalPath();

// The installed folder, with a backslash added when it ends in none. Without it, or when it is too long, the folder of
// the running program. Always ends in a backslash and has at most kHomeFolderCapacity - 1 characters; empty when even
// the program's folder is longer. Read afresh at every call; any thread.
std::wstring HomeFolder();

// The folder of the running program with a backslash at its end; empty when the system does not tell.
std::wstring ProgramFolder();

}  // namespace wrb
