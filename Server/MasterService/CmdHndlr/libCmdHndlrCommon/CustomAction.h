// Completion of an agent's custom action with the server's major virus types.
//
// A custom action is a list of items with ";" between them; an item is a virus type's name and its actions, joined by
// "-": CVE_Exploit-5-4;Joke-1-2;Universe-5-4. The item named Universe (or as the INI names it) is for all types
// without one of their own.
#pragma once

#include <string>
#include <string_view>

#include "INICache.h"

namespace wrb {

// Appends an item for each type of the section INI_MAJOR_VIRUS_TYPE_SECTION that `customAction` lacks, in the section's
// order, and last the universal item if it is missing. Existing items stay; an exploit item is never added. Without the
// section, or with a Count of 0, the text stays as it is.
//
// A type without a name or a first action is skipped; without a second action its item ends after the first. At most
// 1000 types are read. docs/settings.md gives the keys. Throws only for lack of memory.
void CompleteCustomAction(CINICache& ini, std::wstring& customAction);

}  // namespace wrb
