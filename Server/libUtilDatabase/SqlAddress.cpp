#include "SqlAddress.h"

#include <algorithm>
#include <string_view>

#include "IgnoringCase.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kSqlite = L"sqlite:";
constexpr std::wstring_view kOdbc = L"odbc:";
constexpr std::wstring_view kShownKeys[] = {L"DRIVER", L"DSN", L"FILEDSN", L"SERVER", L"PORT", L"DATABASE"};

// Up to the next semicolon outside of braces.
std::wstring_view FirstPart(std::wstring_view text) {
    bool inBraces = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'{' || text[i] == L'}') {
            inBraces = text[i] == L'{';
        } else if (text[i] == L';' && !inBraces) {
            return text.substr(0, i);
        }
    }
    return text;
}

std::wstring_view Trimmed(std::wstring_view text) {
    const std::size_t first = std::min(text.size(), text.find_first_not_of(L' '));
    return text.substr(first, text.find_last_not_of(L' ') + 1 - first);
}

// Only keys that are known to be no secret: drivers have many names for a password.
std::wstring ShownParts(std::wstring_view connection) {
    std::wstring shown(kOdbc);
    while (!connection.empty()) {
        const std::wstring_view part = FirstPart(connection);
        const std::wstring_view key = Trimmed(part.substr(0, part.find(L'=')));
        if (std::ranges::any_of(kShownKeys, [key](std::wstring_view known) { return EqualIgnoringCase(key, known); })) {
            shown += (shown.size() == kOdbc.size() ? L"" : L";") + std::wstring(part);
        }
        connection.remove_prefix(std::min(connection.size(), part.size() + 1));
    }
    return shown;
}

}  // namespace

SqlAddress ParseSqlAddress(const std::wstring& text) {
    if (text.starts_with(kOdbc)) {
        const std::wstring connection = text.substr(kOdbc.size());
        return {true, connection, WideToUtf8(ShownParts(connection))};
    }
    const std::wstring file = text.starts_with(kSqlite) ? text.substr(kSqlite.size()) : text;
    return {false, file, WideToUtf8(file)};
}

}  // namespace wrb
