// All twelve groups of one agent, as the database's combined records give them.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "DbAllScanRecord.h"
#include "ScanGroup.h"

namespace wrb {

using AllScanValues = std::array<ScanGroupValues, kScanGroupCount>;  // in the order of kScanGroups

// Takes the texts out of the records. As agents expect, cleanFailedMoveDir is moveDir, and the exclusion group of scan
// now has the option word of the prescheduled scan.
AllScanValues TakeAllScanValues(AllScanConfig&& config, AllScanLists&& lists);

// Appends the twelve sections. Allocates the room in `out` and one string more.
void ExportAllScanGroups(std::wstring& out, std::wstring_view uid, const AllScanValues& values);

}  // namespace wrb
