// All settings of one agent, or of the server, with where each comes from.
#pragma once

#include <string>
#include <vector>

#include "Explanation.h"

namespace wrb {

struct AgentExplanation {
    std::vector<Explanation> lines;        // in the order in which an agent gets all settings
    std::vector<std::wstring> unreadable;  // sections that could not be read
};

// Without a section: every section. Otherwise the sections of that name, in letters of any case; a scan group also by
// its short name. Without a uid: the server-wide defaults and what all agents get alike. ScanIniCache and
// ServerIniCache must be bound. Unlike the command for all settings this clears no changed bit.
AgentExplanation ExplainAgent(const std::wstring& uid, const std::wstring& section = {});

// The sections that an agent can have, whose names are known beforehand.
std::vector<std::wstring_view> KnownSections();

}  // namespace wrb
