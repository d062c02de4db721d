// The twelve scan groups, explained from the tables that render them.
#pragma once

#include <vector>

#include "Explanation.h"
#include "ScanGroup.h"

namespace wrb {

// One entry a line of the section that CMDHL_GET_..._CFG answers, in its order. Without a uid: the server-wide
// defaults; ScanIniCache must be bound. `changedBits` is the agent's configuration-changed word. False, and nothing is
// appended, when the group cannot be read. Waits for the database, two requests.
bool ExplainScanGroup(const ScanGroup& group, const std::wstring& uid, uint32_t changedBits,
                      std::vector<Explanation>& out);

// Whether the scan INI has the key, read past the cache.
bool IsInScanIni(const std::wstring& section, const std::wstring& key);

}  // namespace wrb
