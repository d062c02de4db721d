// WrbPfwCommon_64x.dll (WrbPfwCommon.h), which unpacks packages. It is loaded at its first use, from the folder of this
// library (of the program, where the code is linked into one) only, and stays loaded. When it is not there, or has no
// fpkExtractFile, or no trusted signature although the server INI wants one (RequireSignedLibraries), one line is
// logged and every unpacking fails until the process starts anew. While another process holds the file, the
// unpacking fails, too, and a later one tries again.
#pragma once

#include <windows.h>

#include <string>

#include "WrbPfwCommon.h"

namespace wrb {

// Gets the events FPK_ENTRY_FOUND and FPK_ENTRY_WRITTEN. It must not throw: its caller may come from another compiler.
using PackageCallback = fpkCallback;

// Unpacks the open `package` into the folder `directory`, which must exist. Its path travels as ANSI text in a buffer
// of 260 bytes; a longer one, or one that the code page cannot hold, fails with a line at level 8. Without a callback
// every entry is unpacked. True only for the library's success value, 1. Any thread.
bool ExtractPackage(HANDLE package, const std::wstring& directory, PackageCallback callback, void* context);

}  // namespace wrb
