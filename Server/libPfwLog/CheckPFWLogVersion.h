// Which version of records an open firewall log file holds.
#pragma once

#include <windows.h>

#include <cstdint>

#include "PfwLogRecord.h"

// The version of an open file by the markers of its first record: 0, 1 or -1 for neither. Version 0 is looked for
// first. The file's position is at its start afterwards, unless the second look could not read anything.
int32_t CheckPFWLogVersion(HANDLE file);

namespace wrb {

// By its size, `bytes`, and where that leaves it open by its markers.
PfwLogVersion PfwLogVersionOfFile(HANDLE file, uint32_t bytes);

}  // namespace wrb
