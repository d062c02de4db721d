// A setting's value as text: checked, and put into the values of its group.
#pragma once

#include <string>
#include <string_view>

#include "SettingCatalog.h"

namespace wrb {

// A text for an agent or for the scan INI may not be longer.
inline constexpr std::size_t kLongestSettingText = 8192;

// Sets the value. What is wrong with the text, for people, and `values` as they were; empty when nothing is. A text for
// an agent has no TAB, line break or NUL; one for the scan INI must also survive the file (ScanCfgIni.h).
std::string SetSetting(const SettingInfo& setting, std::wstring_view text, bool agent, ScanGroupValues& values);

}  // namespace wrb
