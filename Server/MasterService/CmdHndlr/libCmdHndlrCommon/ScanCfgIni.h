// The server-wide scan settings: what the scan INI holds, and the defaults of what it does not. Any thread; writers of
// one section are not kept apart.
#pragma once

#include <cstdint>
#include <string_view>

#include "INICache.h"
#include "ScanGroup.h"

namespace wrb {

// Reads every setting of the group's section (ScanGroup.h gives keys and defaults) into `values`, which it sets anew. A
// switch is on when its number is greater than 0. A main group also takes the switch of its exclusion section into its
// option word. Throws only for lack of memory.
void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, ScanGroupValues& values);

// A line of the file cannot hold a line break or a NUL.
bool FitsAnIniLine(std::wstring_view text) noexcept;

// Whether the text fits and is also read back as it was. The file loses blanks and TABs at either end, a pair of quotes
// around the whole, characters that the ANSI code page lacks (they turn into others, mostly "?"), and what lies beyond
// 65535 bytes in that code page.
bool SurvivesAnIniFile(std::wstring_view text);

struct ScanIniWrite {
    bool complete = false;    // every key was written
    uint32_t bitsStored = 0;  // the option bits of the switches that were written
};

// Writes every setting of the group's section, and of no other, texts as they stand: see above what the file keeps of
// them. When one of them does not fit, nothing at all is written. A key that cannot be written does not keep the others
// from being written; each such key costs the cache's attempts, 0.6 seconds. Either leaves a log line. Throws only for
// lack of memory.
ScanIniWrite WriteScanGroupIni(CINICache& ini, const ScanGroup& group, const ScanGroupValues& values);

}  // namespace wrb
