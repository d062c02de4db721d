// The form of a bundle's descriptor. A setting bundle is a small group of an agent's settings: it has a section, a
// database command and a record of its own. Bundles.h holds the descriptors.
//
// One descriptor says everything about a bundle. The record, the container, the question to the database, the getter,
// the reference database's table and answer, and the seed reader are one template each over it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace wrb {

enum class BundleRowKind : uint8_t {
    Bit,            // "1" or "0" from an option word
    Int,            // a number, shown signed
    Text,           // a text as it stands
    List,           // a text with "|" between the items: their count, then a key an item
    ProtectedList,  // the same with every item protected, and the count after the items
};

// A key of the section and the field that feeds it.
template <typename Values>
struct BundleRow {
    BundleRowKind kind;
    const wchar_t* key;                    // a format for the number ("%d") where there is a key an item
    const char* column;                    // the field in the reference database
    uint32_t Values::*number = nullptr;    // the field: Bit, Int
    std::wstring Values::*text = nullptr;  // the field: Text and the lists
    uint32_t bits = 0;                     // Bit: the mask
    const wchar_t* countKey = nullptr;     // the lists: the key of the number of items
    const wchar_t* seedKey = nullptr;      // the key in the seed file; null: `key` up to its number
};

// The log lines of the getter, at level 8. Every text gets the getter's name first.
struct BundleLog {
    const wchar_t* getter = nullptr;
    const wchar_t* enter = L"%s - pszUid=%s";  // also gets the uid, and whether the configuration bit is to be cleared
    const wchar_t* failed = L"%s - failed to send command to DB server";
    const wchar_t* reader = nullptr;  // a name under which the failed question is logged first
    bool traced = false;              // ">>>" at the start, the rendered text, "<<<" at the end
};

template <typename Values>
struct Bundle {
    const wchar_t* section = nullptr;   // this and the command: null for records that are part of other containers
    const wchar_t* countKey = nullptr;  // set: the agent has any number of records, and this key, which precedes them,
                                        // has their number. Null: it has one
    const wchar_t* command = nullptr;   // of the database; DbCommands.inc has its row
    uint32_t configBit = 0;             // the configuration-changed bit that the getter clears; 0: none
    const char* table = nullptr;        // in the reference database; null: the values are stored elsewhere
    const char* seedKey = nullptr;      // in the seed file's agents, where there is a table
    BundleLog log = {};
    void (*logRecord)(const Values& values) = nullptr;  // what the container logs of each record that it shows
    std::span<const BundleRow<Values>> rows;            // the keys in the order of the section
};

// The descriptor of the bundle with these values: Bundles.h specializes it for each.
template <typename Values>
inline constexpr Bundle<Values> kBundle = {};

// A number that was received for a row: any but 0 sets its bits, or it is the field itself.
template <typename Values>
void SetNumber(const BundleRow<Values>& row, uint32_t number, Values& values) {
    if (row.kind != BundleRowKind::Bit) {
        values.*row.number = number;
    } else if (number != 0) {
        values.*row.number |= row.bits;
    }
}

template <typename Values>
inline constexpr bool kHasItems = kBundle<Values>.countKey != nullptr;

// Calls visit(row, field) once a field, in the order in which the rows first name the fields. That is the order on the
// wire and in the reference database. `Object` is Values, or const Values to read.
template <typename Values, typename Object, typename Visit>
void ForEachField(Object& values, Visit visit) {
    const auto rows = kBundle<Values>.rows;
    for (auto row = rows.begin(); row != rows.end(); ++row) {
        const auto sameField = [&](const auto& other) {
            return other.number == row->number && other.text == row->text;
        };
        if (std::any_of(rows.begin(), row, sameField)) {
            continue;
        }
        if (row->number != nullptr) {
            visit(*row, values.*row->number);
        } else {
            visit(*row, values.*row->text);
        }
    }
}

}  // namespace wrb
