// Where a value that an agent gets comes from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wrb {

enum class SettingSource : uint8_t {
    Request,         // the uid that was asked for
    DatabaseBit,     // bits of a word in the database
    DatabaseNumber,  // a number there
    DatabaseText,    // a text there, or a part of one
    Completed,       // a text there, completed from the scan INI
    ScanIni,         // a key of the scan INI
    Default,         // the key is missing
    Fixed,           // always the same
};

// "database bit", "scan INI", ...
const char* NameOf(SettingSource source) noexcept;

// A line of an INI section.
struct IniLine {
    std::wstring section;
    std::wstring key;
    std::wstring value;
};

// The value is as the agent gets it.
struct Explanation : IniLine {
    Explanation() = default;
    explicit Explanation(IniLine&& line) : IniLine(std::move(line)) {}

    SettingSource source = SettingSource::Fixed;
    std::wstring from;             // the database command and its field, or the file
    std::optional<uint32_t> word;  // DatabaseBit: the whole word
    uint32_t mask = 0;             // and the bits that count
    uint32_t groupBit = 0;         // the configuration-changed bit of the section; 0: it has none
    bool isChanged = false;        // that bit is set: the agent has not fetched the section since it was changed
};

// The lines of rendered sections.
std::vector<IniLine> SplitSections(std::wstring_view text);

}  // namespace wrb
