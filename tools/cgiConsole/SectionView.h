// What one agent is told: its sections, key by key, and where it differs from the server-wide defaults.
#pragma once

#include <string>

#include "View.h"

namespace wrb {

// "differences": the settings of the twelve scan groups that are not the server-wide defaults; "hasSettings": the agent
// has any. A few requests to the database server.
void AddDifferences(const std::wstring& uid, Data& data);

// "sectionMenu": every section by name; "lines": the keys of the one that is asked for, "*" for all sections. No lines
// without one.
void AddSectionLines(const std::wstring& uid, const std::wstring& section, Data& data);

}  // namespace wrb
