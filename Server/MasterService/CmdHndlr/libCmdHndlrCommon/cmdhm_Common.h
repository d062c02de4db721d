// Settings of the server's INI files in the form in which agents get them.
//
// The text is appended to `out`; after a failure, which the log tells, `out` is as it was. Throws only for lack of
// memory. Any thread.
#pragma once

#include <string>

namespace wrb {

// A section of the scan INI as it stands there: its header, then a line a key. A missing section is its header alone.
// False when the section is longer than the system reads one.
bool GetIniSection(std::wstring& out, const wchar_t* section);

}  // namespace wrb
