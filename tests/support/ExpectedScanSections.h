// What the twelve scan sections have to look like, written down a second time and in another form than the product's
// tables, so that a slip in those shows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ScanGroup.h"

namespace wrb::test {

// One key of a section, from a word like "OleLayer=n1:3": key, source, and behind the colon the value that a missing
// INI key counts as (empty for keys that are not in the INI).
//
//   uid        the uid
//   b<n>       bit n of the flags
//   n<i>       number i: 0 CompressedLayer, 1 OleLayer, 2 PossibleVirusCustActInActiveAct, 3 .. 10 the schedule
//   t<i>       text i: 0 ExtList, 1 MoveDir, 2 CleanFailedMoveDir, 3 CustAction, 4 .. 6 the excluded folder, file and
//              extension, 7 ExcludeFileExtList
//   speed, type, action16, action17, actionRT     the numbers that stand for bits
//   nothing    always empty
struct ExpectedKey {
    std::wstring key;
    std::wstring source;
    std::wstring iniDefault;
};

struct ExpectedSection {
    ScanType type;
    ScanGroupKind kind;
    std::wstring name;
    std::vector<ExpectedKey> keys;

    const ScanGroup& Group() const { return FindScanGroup(type, kind); }

    // The section that these values give.
    std::wstring Text(std::wstring_view uid, const ScanGroupValues& values) const;
};

const std::vector<ExpectedSection>& ExpectedScanSections();

// Different in every member, so that two that are swapped show; two numbers are negative when taken as signed.
ScanGroupValues DistinctScanValues(uint32_t flags);

}  // namespace wrb::test
