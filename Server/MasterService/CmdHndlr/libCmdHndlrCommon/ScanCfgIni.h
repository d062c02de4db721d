// The server-wide scan settings of the scan INI, with defaults for missing keys. Any thread; two writers of one section
// may mix their keys.
#pragma once

#include <cstdint>
#include <string_view>

#include "INICache.h"
#include "ScanGroup.h"

namespace wrb {

// Reads every setting of the group's section (ScanGroup.h gives keys and defaults) into `values`, set anew. A switch is
// on when its number is greater than 0. A main group's option word also gets the switch of its exclusion section.
// Throws only for lack of memory.
void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, ScanGroupValues& values);

// A line of the file cannot hold a line break or a NUL, nor more than 65535 characters.
bool FitsAnIniLine(std::wstring_view text) noexcept;

// Whether every text of the group fits; false with a log line that names `caller`. What an agent gets are such lines,
// too: a text with a line break would begin a key or a section of its own there.
bool TextsFitLines(const ScanGroup& group, const ScanGroupValues& values, const wchar_t* caller);

// Whether the text fits and is read back as it was. The file loses blanks and TABs at either end, a pair of quotes
// around the text, characters that the ANSI code page lacks, and what is beyond 65535 bytes in that code page.
bool SurvivesAnIniFile(std::wstring_view text);

struct ScanIniWrite {
    bool complete = false;    // every key was written
    uint32_t bitsStored = 0;  // the option bits of the switches that were written
};

// Writes every setting of the group's section, texts as they stand; with `before` only those that differ from it. When
// a text does not fit a line, nothing is written. A key that cannot be written costs the cache's attempts, 0.6 seconds,
// and the others are written. Either leaves a log line. Throws only for lack of memory.
ScanIniWrite WriteScanGroupIni(CINICache& ini, const ScanGroup& group, const ScanGroupValues& values,
                               const ScanGroupValues* before = nullptr);

}  // namespace wrb
