// Completion of an agent's custom action with the server's major virus types.
//
// A custom action is a list of items with ";" between them; an item is a virus type's name and its actions, joined by
// "-": CVE_Exploit-5-4;Joke-1-2;Universe-5-4. The item named Universe (or as the INI names it) is for all types
// without one of their own. The item of the exploit marker is 15 characters and one separator long, which is what the
// real-time section cuts out of the list.
#pragma once

#include <string>
#include <string_view>

#include "INICache.h"

namespace wrb {

// Appends an item for each type of the section INI_MAJOR_VIRUS_TYPE_SECTION that `customAction` has no item for, in the
// section's order, and last the universal item if that is missing. Items that are there stay where and as they are; an
// exploit item is never added. Without the section, or with a Count of 0, the text is left alone.
//
// A type without a name or a first action is passed over; without a second action its item ends behind the first. At
// most 1000 types are read. docs/settings.md gives the keys. Throws only for lack of memory.
void CompleteCustomAction(CINICache& ini, std::wstring& customAction);

}  // namespace wrb
