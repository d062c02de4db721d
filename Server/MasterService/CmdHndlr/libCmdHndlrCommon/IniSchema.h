// Which keys the server reads in which section of its two INI files. docs/settings.md says what each means.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "INICache.h"

namespace wrb {

enum class IniFile : uint8_t {
    Scan,    // wrbscan.ini
    Server,  // Private\wrbserver.ini
};

struct IniKey {
    std::wstring_view name;  // "%d" or "%03d" stands for the number of an item
    bool isText = true;
    int64_t least = 0;  // of a number
    int64_t most = 0;
};

struct IniSection {
    IniFile file;
    std::wstring_view name;
    std::vector<IniKey> keys;  // empty: handed on to agents as it stands, with any key
};

// Made on first use. Any thread.
std::span<const IniSection> KnownIniSections();

// In letters of any case; null when there is none.
const IniSection* FindIniSection(IniFile file, std::wstring_view name);
const IniKey* FindIniKey(const IniSection& section, std::wstring_view key);

// Logs each key that a known section of a file has and the server does not read, at level 'W' and at most 50 lines a
// file. A misspelt key is silent otherwise: its default applies. Reads the files past the caches.
void WarnOfUnknownIniKeys(CINICache& scanIni, CINICache& serverIni);

}  // namespace wrb
