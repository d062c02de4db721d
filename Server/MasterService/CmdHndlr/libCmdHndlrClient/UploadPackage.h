// Packages that agents upload, and the folders into which they are unpacked.
//
// The unpacking itself is in WrbPfwCommon_64x.dll (WrbPfwCommon.h), which is bound at its first use. It is taken from
// the folder of this very library (of the program, where the code is linked into one) and from nowhere else, and stays
// loaded. When it is not there, a line is logged once and every unpacking fails until the process starts anew.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "WrbPfwCommon.h"

namespace wrb {

// Events and results: FPK_ENTRY_FOUND and FPK_ENTRY_WRITTEN of WrbPfwCommon.h. It must not throw: there may be another
// compiler's code between it and its caller.
using PackageCallback = fpkCallback;

// The folder of one request: `base` and directly behind it what follows the first `skip` characters of the reply pipe's
// name, which makes it unique. Throws std::out_of_range when the name is shorter than `skip`: the request then ends
// where it stands, without an answer, and the exception goes on to the service.
std::wstring ExtractionDirectory(std::wstring_view base, std::wstring_view replyPipe, std::size_t skip);

// Unpacks `package` into the folder `directory`, which must exist. Both travel as ANSI text in buffers of 260 bytes; a
// path that is longer, or that the code page cannot hold, fails, with a line of level 8. Without a callback every entry
// is unpacked. True only for the library's success value, 1. Any thread.
bool ExtractPackage(const std::wstring& package, const std::wstring& directory, PackageCallback callback,
                    void* context);

// Checks a package as thoroughly as unpacking it would, and writes nothing.
bool TestPackage(const std::wstring& package, const std::wstring& directory);

// Removes the folders on the way from `directory` down to `entry`, deepest first, as far as they are empty; `directory`
// itself stays. Both as a callback gets them.
void RemoveEntryFolders(const char* directory, const char* entry);

}  // namespace wrb
