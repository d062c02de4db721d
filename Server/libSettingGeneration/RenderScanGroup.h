// One scan group as the INI section that an agent receives.
#pragma once

#include <string>
#include <string_view>

#include "ScanGroup.h"

namespace wrb {

// A custom action with the exploit action taken out of it. An item of the action list is a virus type's name and two
// actions, for example CVE_Exploit-5-4;Universe-5-4.
struct SplitCustomAction {
    std::wstring_view head;     // what stands before the exploit item
    std::wstring_view tail;     // what stands behind it and one separator
    std::wstring_view exploit;  // the marker and the four characters behind it, or fewer at the end of the text

    bool HasExploit() const noexcept { return !exploit.empty(); }
};

// Splits at the first marker; without one everything is head. The parts point into `text`.
SplitCustomAction SplitAtExploit(std::wstring_view text) noexcept;

// Appends the group's section to `out` and never clears it. Reads the values in place: but for the growth of `out`
// nothing is allocated.
void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

}  // namespace wrb
