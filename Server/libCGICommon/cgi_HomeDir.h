// The server's home folder: the INI files, the alert texts and the folder Temp lie under it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Room for the longest home folder and its terminator.
inline constexpr std::size_t kHomeDirCapacity = 260;

// The folder that the installation wrote into the registry (ServerRegistry.h), with a backslash added when it ends in
// none. Without it, or when it is too long, the folder of the running program. Always ends in a backslash and has at
// most 259 characters; empty when even the program's folder is longer. Read afresh at every call; any thread.
std::wstring cgi_GetHomeDir();

// The same into a buffer of `capacity` characters. False, with an empty text in the buffer, when there is no home
// folder or it does not fit with its terminator.
bool cgi_GetHomeDir(wchar_t* buffer, uint32_t capacity);
