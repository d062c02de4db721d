// The twelve scan groups, explained from the tables that render them.
#pragma once

#include <optional>
#include <vector>

#include "AllScanValues.h"
#include "Explanation.h"
#include "ScanGroup.h"

namespace wrb {

// What is stored of all groups of an agent, in two requests. Nothing for an agent that is unknown or has no settings.
std::optional<AllScanValues> ReadAllScanGroups(const std::wstring& uid);

// One entry a line of the section that CMDHL_GET_..._CFG answers, in its order. Without a uid: the server-wide
// defaults; ScanIniCache must be bound. `changedBits` is the agent's configuration-changed word, `stored` what is
// stored of the group.
void ExplainScanGroup(const ScanGroup& group, const std::wstring& uid, uint32_t changedBits,
                      const ScanGroupValues& stored, std::vector<Explanation>& out);

// Whether the scan INI has the key, read past the cache.
bool IsInScanIni(const std::wstring& section, const std::wstring& key);

}  // namespace wrb
