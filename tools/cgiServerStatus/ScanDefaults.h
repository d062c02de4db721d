// The server-wide defaults of the manual scan as fields of text: what the page shows and what it takes.
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

const ScanGroup& FormGroup();

// The values that a switch or a choice can have.
std::vector<uint32_t> FieldChoices(const ScanRow& row);

std::wstring FieldText(const ScanRow& row, const ScanGroupValues& values);

// False, with `values` as they were, when the text is no value of the row: a switch takes 0 and 1, a choice its
// numbers, a number 0 to 255 in decimal digits. A text has at most 1024 characters, none of them a control character,
// and must survive an INI file (ScanCfgIni.h).
bool SetField(const ScanRow& row, std::wstring_view text, ScanGroupValues& values);

struct StoreResult {
    std::vector<std::wstring> changed;  // keys whose value is another now
    std::vector<std::wstring> refused;  // keys whose text was no value; then nothing is stored
    bool failed = false;                // the file could not be written
};

// The text given for a key; null when none is given, which leaves the setting as it is. Valid until the next call.
using FieldSource = std::function<const wchar_t*(const wchar_t* key)>;

// Stores all or nothing, short of a file that fails in between.
StoreResult StoreDefaults(CINICache& scanIni, const FieldSource& given);

}  // namespace wrb
