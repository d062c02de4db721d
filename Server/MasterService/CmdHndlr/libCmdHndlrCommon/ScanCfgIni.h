// The server-wide scan settings: what the scan INI holds, and the defaults of what it does not.
#pragma once

#include "INICache.h"
#include "ScanGroup.h"

namespace wrb {

// Reads every setting of the group's section (ScanGroup.h gives keys and defaults) into `values`, which it sets anew. A
// switch is on when its number is greater than 0. A main group also takes the switch of its
// exclusion section into its option word. Throws only for lack of memory.
void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, tagScanGroupValues& values);

}  // namespace wrb
