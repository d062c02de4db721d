#include <algorithm>
#include <set>

#include "IgnoringCase.h"
#include "ProfileAccess.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kBlanks[] = " \t";

std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view WithoutQuotes(std::string_view text) {
    const bool quoted = text.size() > 1 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back();
    return quoted ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

std::string SectionLines(std::string_view lines) {
    std::string text;
    std::set<std::wstring, LessIgnoringCase> keys;  // letters beyond ASCII have cases too
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\0'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        const std::string_view key = Trim(line.substr(0, line.find('=')));
        if (line.find('=') == line.npos || key.empty() || key.starts_with(';') ||
            !keys.insert(AnsiToWide(key)).second) {
            continue;
        }
        text.append(key).append("=").append(WithoutQuotes(Trim(line.substr(line.find('=') + 1)))).append("\n");
    }
    return text;
}

}  // namespace wrb
