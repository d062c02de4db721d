// The table of the text commands; TextCommands.h runs them.
#pragma once

#include <cstdint>
#include <span>

#include "DbCommands.h"
#include "ScanGroup.h"

namespace wrb {

// Which scan row of an agent a command is about. With MainBit and ExclusionBit the request says so, by the
// configuration-changed bit of a main or an exclusion group; a command may have a row of each.
enum class ScanOf : uint8_t { None, MS, RT, PS, SN, MainBit, ExclusionBit };

struct TextCommandRow {
    DbCommand command;
    ScanOf scan;

    // The request's fields in their order, with blanks between them: the name of an SQL parameter, whose sigil says how
    // the field is read (":" text, "@" 32-bit number, "$" signed 64-bit number); "bit" for the configuration bit; "-"
    // for a field that means nothing here. "@type" is the number of the scan type.
    const char* fields;

    const char* sql;
    const char* where;  // appended to it
};

std::span<const TextCommandRow> TextCommandRows();

}  // namespace wrb
