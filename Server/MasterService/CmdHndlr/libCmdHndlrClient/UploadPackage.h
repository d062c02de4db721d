// Packages that agents upload, and the folders into which they are unpacked.
//
// WrbPfwCommon_64x.dll (WrbPfwCommon.h) does the unpacking. It is loaded at its first use, from the folder of this
// library (of the program, where the code is linked into one) only, and stays loaded. When it is not there, one line is
// logged and every unpacking fails until the process starts anew.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "WrbPfwCommon.h"

namespace wrb {

// Gets the events FPK_ENTRY_FOUND and FPK_ENTRY_WRITTEN. It must not throw: its caller may come from another compiler.
using PackageCallback = fpkCallback;

// The folder of one request: `base`, then the reply pipe's name without its first `skip` characters, which makes it
// unique. Throws std::out_of_range when the name is shorter than `skip`: the request ends without an answer, and
// cmdhl_Process throws.
std::wstring ExtractionDirectory(std::wstring_view base, std::wstring_view replyPipe, std::size_t skip);

// Unpacks `package` into the folder `directory`, which must exist. Both travel as ANSI text in buffers of 260 bytes; a
// longer path, or one that the code page cannot hold, fails with a line at level 8. Without a callback every entry is
// unpacked. True only for the library's success value, 1. Any thread.
bool ExtractPackage(const std::wstring& package, const std::wstring& directory, PackageCallback callback,
                    void* context);

// Checks a package as thoroughly as unpacking it would, and writes nothing.
bool TestPackage(const std::wstring& package, const std::wstring& directory);

// Removes the empty folders between `directory`, which stays, and `entry`, deepest first. Both are as a callback gets
// them.
void RemoveEntryFolders(const char* directory, const char* entry);

}  // namespace wrb
