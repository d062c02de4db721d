// One setting of a scan group as the text that stands in the scan INI.
#pragma once

#include <string>

#include "ScanGroup.h"

namespace wrb {

// A text as it is stored: the exploit item of a real-time custom action is not split off. Empty for a row that is not a
// setting.
std::wstring ScanRowText(const ScanRow& row, const ScanGroupValues& values);

}  // namespace wrb
