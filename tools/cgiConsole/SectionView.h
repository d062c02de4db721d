// What one agent is told: its sections, key by key, and where it differs from the server-wide defaults or another
// agent.
#pragma once

#include <string>

#include "View.h"

namespace wrb {

// "differences": the settings of the twelve scan groups that are not those of the agent `with`, or, when that is empty,
// the server-wide defaults; "hasSettings", "hasOther": the two have any. A few requests to the database server.
void AddDifferences(const std::wstring& uid, const std::wstring& with, Data& data);

// "sectionMenu": every section by name; "lines": the keys of the one that is asked for, "*" for all sections. No lines
// without one.
void AddSectionLines(const std::wstring& uid, const std::wstring& section, Data& data);

}  // namespace wrb
