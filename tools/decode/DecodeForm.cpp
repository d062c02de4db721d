#include <algorithm>
#include <string>

#include "Formats.h"
#include "QueryTokens.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string_view TextOf(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool IsMultipart(std::string_view text) {
    return text.starts_with("--") && text.find("Content-Disposition:") != text.npos && text.find(kLineEnd) != text.npos;
}

void TakeLine(FieldCursor& cursor, const std::string& name) {
    const std::string_view text = TextOf(cursor.Rest());
    const std::size_t end = std::min(text.find(kLineEnd), text.size());
    cursor.Take(name, end, Utf8ToWide(text.substr(0, end)));
    cursor.Skip(std::min(kLineEnd.size(), text.size() - end));
}

// The parts have a line with the boundary in front, their own heads, an empty line and the content.
void DecodeMultipart(FieldCursor& cursor) {
    const std::string_view all = TextOf(cursor.Rest());
    const std::string boundary(all.substr(0, all.find(kLineEnd)));
    for (unsigned number = 1; TextOf(cursor.Rest()).starts_with(boundary); ++number) {
        TakeLine(cursor, "boundary");
        const std::string part = "part " + std::to_string(number);
        if (cursor.AtEnd()) {
            return;
        }
        while (!cursor.AtEnd() && !TextOf(cursor.Rest()).starts_with(kLineEnd)) {
            TakeLine(cursor, part + " head");
        }
        cursor.Skip(std::min(kLineEnd.size(), cursor.Rest().size()));
        const std::string_view rest = TextOf(cursor.Rest());
        const std::size_t end = rest.find(std::string(kLineEnd) + boundary);
        if (end == rest.npos) {
            cursor.Fail(part + " has no end");
        }
        cursor.Take(part + " content", end, Utf8ToWide(rest.substr(0, end)));
        cursor.Skip(kLineEnd.size());
    }
}

void DecodeQuery(FieldCursor& cursor) {
    std::string text(TextOf(cursor.Rest()));
    const char* at = text.data();
    for (const std::string_view token : SplitQuery(text.data(), text.size())) {
        const NameAndValue parts = SplitToken(token);
        cursor.Skip(static_cast<std::size_t>(token.data() - at));
        cursor.Take(WideToUtf8(PercentDecode(parts.name)), token.size(), PercentDecode(parts.value));
        at = token.data() + token.size();
    }
    cursor.Skip(cursor.Rest().size());
}

}  // namespace

bool IsForm(std::span<const uint8_t> bytes) {
    const std::string_view text = TextOf(bytes);
    const auto isPlain = [](char c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n'; };
    return IsMultipart(text) || (text.find('=') != text.npos && std::ranges::all_of(text, isPlain));
}

void DecodeForm(FieldCursor& cursor) {
    IsMultipart(TextOf(cursor.Rest())) ? DecodeMultipart(cursor) : DecodeQuery(cursor);
}

}  // namespace wrb
