// The names of a package's entries: where a hostile package would try to leave its folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace wrb {

struct EntryName {
    std::wstring wide;   // relative path with backslashes
    std::string narrow;  // the same in the ANSI code page, from which it comes back unchanged
};

// Nothing when the name is no plain relative path below the target folder (WrbPfwCommon.h lists what that excludes).
// `utf8` says how a cabinet has stored the name; otherwise it is in the ANSI code page.
std::optional<EntryName> CheckEntryName(std::string_view stored, bool utf8);

}  // namespace wrb
