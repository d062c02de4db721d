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

// "INI_CRITICAL_SECTION" and "INI_SCHEDULE_SECTION" of the scan INI with every key that agents know; a missing text is
// empty, a missing number 0. With a uid, which is cut to 36 characters, the privileges and the two passwords are the
// agent's, from the database: three requests. False when one fails, or the agent is not known.
bool GetCriticalSetting(std::wstring& out, const wchar_t* uid);

// "INI_COMPONENT_VERSION_SECTION" of the scan INI with every key that agents know; a missing version is empty.
bool GetComponentVersions(std::wstring& out);

}  // namespace wrb
