// What the server's installation wrote into the registry.
#pragma once

#include <string>

namespace wrb {

// The server's home folder as installed: value "Local_Path" (REG_SZ) of the key
// HKEY_LOCAL_MACHINE\SOFTWARE\CallowaySystems\Warrenby\service\Information, always in the 64-bit view.
//
// Returned as written, with or without a backslash at its end. Empty when the key or the value is missing, is of
// another type or is longer than 1023 characters. Read afresh at every call; never logs; any thread.
std::wstring ReadLocalPath();

}  // namespace wrb
