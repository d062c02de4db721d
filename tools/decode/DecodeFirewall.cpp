#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "Bytes.h"
#include "Formats.h"
#include "PfwLogRecord.h"
#include "Text.h"

namespace wrb {
namespace {

enum class Form { Number, Hex, Octets, Narrow, Wide };

// A field of a version has a form and bytes; 0: the version has no such field.
struct Row {
    const char* name;
    std::array<std::size_t, 2> bytes;
    std::array<Form, 2> forms;
};

constexpr Row Number(const char* name, std::size_t bytes) {
    return {name, {bytes, bytes}, {Form::Number, Form::Number}};
}
constexpr Row Hex(const char* name, std::size_t bytes0, std::size_t bytes1) {
    return {name, {bytes0, bytes1}, {Form::Hex, Form::Hex}};
}

constexpr Row kRows[] = {
    Hex("head", 1, 1),
    Number("direction", 1),
    Number("port", 2),
    Number("time", 4),
    Hex("more reserved", 0, 8),
    {"local address", {4, kPfwLogHostBytes}, {Form::Octets, Form::Narrow}},
    {"remote address", {4, kPfwLogHostBytes}, {Form::Octets, Form::Narrow}},
    {"process path", {kPfwLogNameBytes, kPfwLogNameBytes}, {Form::Narrow, Form::Narrow}},
    Hex("reserved", 260, 260),
    {"process information", {kPfwLogInfoCharacters * 2, kPfwLogInfoCharacters * 2}, {Form::Wide, Form::Wide}},
    Number("protocol", 2),
    Number("type", 2),
    Number("sub-type", 2),
    Hex("rear", 1, 1),
    Hex("padding", 1, 3),
};

constexpr std::size_t BytesOf(std::size_t version) {
    std::size_t bytes = 0;
    for (const Row& row : kRows) {
        bytes += row.bytes[version];
    }
    return bytes;
}
static_assert(BytesOf(0) == sizeof(SWRB_PFW_LOG_ITEM_V0) && BytesOf(1) == sizeof(SWRB_PFW_LOG_ITEM));

bool HasMarkers(std::span<const uint8_t> record, std::size_t rear) {
    return record.size() > rear && record[0] == kPfwLogHead && record[rear] == kPfwLogRear;
}

PfwLogVersion VersionOf(std::span<const uint8_t> bytes) {
    const PfwLogVersion version = PfwLogVersionOfSize(static_cast<uint32_t>(bytes.size()));
    if (version != PfwLogVersion::kUnknown) {
        return version;
    }
    return HasMarkers(bytes, offsetof(SWRB_PFW_LOG_ITEM_V0, byRear)) ? PfwLogVersion::kV0 : PfwLogVersion::kV1;
}

std::wstring OctetsText(std::span<const uint8_t> octets) {
    return FormatWide(L"%u.%u.%u.%u", octets[0], octets[1], octets[2], octets[3]);
}

// Texts end at their first NUL; one without it loses its last character.
template <typename Character>
std::basic_string<Character> TextIn(std::basic_string<Character> field) {
    field.resize(std::min(field.find(Character{0}), field.size() - 1));
    return field;
}

void TakeField(FieldCursor& record, const char* name, std::size_t count, Form form) {
    const std::span<const uint8_t> bytes = record.Rest().first(count);
    switch (form) {
        case Form::Number:
            record.TakeNumber(name, count);
            break;
        case Form::Hex:
            record.TakeBytes(name, count);
            break;
        case Form::Octets:
            record.Take(name, count, OctetsText(bytes));
            break;
        case Form::Narrow:
            record.Take(name, count, AnsiToWide(TextIn(std::string(bytes.begin(), bytes.end()))));
            break;
        case Form::Wide:
            record.Take(name, count, TextIn(WideTextOf(bytes)));
            break;
    }
}

}  // namespace

bool IsFirewallLog(std::span<const uint8_t> bytes) {
    return HasMarkers(bytes, VersionOf(bytes) == PfwLogVersion::kV0 ? offsetof(SWRB_PFW_LOG_ITEM_V0, byRear)
                                                                    : offsetof(SWRB_PFW_LOG_ITEM, byRear));
}

void DecodeFirewallLog(FieldCursor& cursor) {
    const PfwLogVersion version = VersionOf(cursor.Rest());
    for (uint32_t number = 1; !cursor.AtEnd(); ++number) {
        const std::string prefix = "record " + std::to_string(number) + ": ";
        FieldCursor record = cursor.TakePart(PfwLogRecordSize(version), prefix);
        for (const Row& row : kRows) {
            const std::size_t place = version == PfwLogVersion::kV0 ? 0 : 1;
            if (row.bytes[place] != 0) {
                TakeField(record, row.name, row.bytes[place], row.forms[place]);
            }
        }
    }
}

}  // namespace wrb
