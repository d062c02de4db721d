// What people are told about a setting of the scan groups: label, range, unit and one sentence.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "ScanGroup.h"

namespace wrb {

// ASCII texts.
struct SettingHelp {
    std::wstring_view key;
    const char* label;
    const char* text;   // one sentence
    int32_t least = 0;  // the range of a number
    int32_t most = 255;
    const char* unit = "";
};

// The help of a key in that kind of group; null when there is none. A key means the same in each scan type.
const SettingHelp* FindSettingHelp(ScanGroupKind kind, std::wstring_view key) noexcept;

}  // namespace wrb
