#include "SqlAddress.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "IgnoringCase.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kSqlite = L"sqlite:";
constexpr std::wstring_view kOdbc = L"odbc:";
constexpr int64_t kMostSeconds = 3600;
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

void Append(std::wstring& parts, std::wstring_view part) {
    parts += (parts.empty() ? L"" : L";") + std::wstring(part);
}

// Of "KEY=SECONDS".
void TakeSeconds(std::wstring_view part, unsigned& seconds, std::string& wrong) {
    const std::size_t equals = std::min(part.size(), part.find(L'='));
    const int64_t number = ParseInt64(part.substr(std::min(part.size(), equals + 1)));
    if (number >= 1 && number <= kMostSeconds) {
        seconds = static_cast<unsigned>(number);
    } else {
        wrong = WideToUtf8(Trimmed(part.substr(0, equals))) + " takes a number from 1 to 3600";
    }
}

// The parts that are ours go into `address`, the others are the driver's. Shown are only keys that are known to be no
// secret: drivers have many names for a password.
SqlAddress ParseConnection(std::wstring_view connection) {
    SqlAddress address;
    address.isOdbc = true;
    const std::pair<std::wstring_view, unsigned*> ours[] = {{L"LOGINTIMEOUT", &address.loginSeconds},
                                                            {L"STATEMENTTIMEOUT", &address.statementSeconds}};
    std::wstring shown;
    while (!connection.empty()) {
        const std::wstring_view part = FirstPart(connection);
        const std::wstring_view key = Trimmed(part.substr(0, part.find(L'=')));
        const auto isKey = [key](std::wstring_view known) { return EqualIgnoringCase(key, known); };
        if (const auto* const own = std::ranges::find_if(ours, [&](const auto& row) { return isKey(row.first); });
            own != std::end(ours)) {
            TakeSeconds(part, *own->second, address.wrong);
        } else {
            Append(address.target, part);
        }
        if (std::ranges::any_of(kShownKeys, isKey)) {
            Append(shown, part);
        }
        connection.remove_prefix(std::min(connection.size(), part.size() + 1));
    }
    address.name = WideToUtf8(std::wstring(kOdbc) + shown);
    if (address.target.empty()) {
        address.wrong = "names no connection";
    }
    return address;
}

}  // namespace

SqlAddress ParseSqlAddress(const std::wstring& text) {
    if (text.starts_with(kOdbc)) {
        return ParseConnection(std::wstring_view(text).substr(kOdbc.size()));
    }
    const std::wstring file = text.starts_with(kSqlite) ? text.substr(kSqlite.size()) : text;
    SqlAddress address;
    address.target = file;
    address.name = WideToUtf8(file);
    return address;
}

}  // namespace wrb
