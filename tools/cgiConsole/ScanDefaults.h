// The server-wide defaults of a scan group as text fields: what the page shows and accepts.
//
// The fields are the settings of the group's table (ScanGroup.h), under the names that they have in the scan INI.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "INICache.h"
#include "ScanGroup.h"

namespace wrb {

inline constexpr uint32_t kHighestFormNumber = 255;
inline constexpr std::size_t kLongestFormText = 1024;

// The values that a switch or a choice can have.
std::vector<uint32_t> FieldChoices(const ScanRow& row);

std::wstring FieldText(const ScanRow& row, const ScanGroupValues& values);

// False, with `values` unchanged, when the text is not a value of the row: a switch takes 0 and 1, a choice its
// numbers, a number 0 to 255 in decimal digits. A text has at most 1024 characters, none of them a control character,
// and must survive an INI file (ScanCfgIni.h).
bool SetField(const ScanRow& row, std::wstring_view text, ScanGroupValues& values);

struct StoreResult {
    std::vector<std::wstring> changed;  // keys with a new value
    std::vector<std::wstring> refused;  // keys with an invalid text; then nothing is stored
    bool failed = false;                // the file could not be written
};

// The text given for a key; null when none is given, which leaves the setting unchanged. Valid until the next call.
using FieldSource = std::function<const wchar_t*(const wchar_t* key)>;

// Stores all or nothing, unless a write to the file fails midway.
StoreResult StoreDefaults(CINICache& scanIni, const ScanGroup& group, const FieldSource& given);

}  // namespace wrb
