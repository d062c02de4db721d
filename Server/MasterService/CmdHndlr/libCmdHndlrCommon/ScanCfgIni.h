// The server-wide scan settings: what the scan INI holds, and the defaults of what it does not. Any thread; writers of
// one section are not kept apart.
#pragma once

#include "INICache.h"
#include "ScanGroup.h"

namespace wrb {

// Reads every setting of the group's section (ScanGroup.h gives keys and defaults) into `values`, which it sets anew. A
// switch is on when its number is greater than 0. A main group also takes the switch of its
// exclusion section into its option word. Throws only for lack of memory.
void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, tagScanGroupValues& values);

// Writes every setting of the group's section, and of no other, as ReadScanGroupIni would find it. False: the file
// could not be written, or a text with a line break, which a line of the file cannot hold, was refused; both leave a
// log line, and the keys behind that one as they were. Throws only for lack of memory.
bool WriteScanGroupIni(CINICache& ini, const ScanGroup& group, const tagScanGroupValues& values);

}  // namespace wrb
