#include "QueryTokens.h"

#include <algorithm>

namespace wrb {
namespace {

// The first run of characters outside `separators`; `text` is left with what follows the run and one separator.
std::string_view NextRun(std::string_view& text, std::string_view separators) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
    const std::string_view run = text.substr(0, text.find_first_of(separators));
    text.remove_prefix(std::min(run.size() + 1, text.size()));
    return run;
}

}  // namespace

std::vector<std::string_view> SplitQuery(char* text, std::size_t size) {
    char* const end = std::find(text, text + size, '\0');
    std::replace(text, end, '+', ' ');
    std::string_view rest(text, static_cast<std::size_t>(end - text));
    std::vector<std::string_view> tokens;
    for (std::string_view token; !(token = NextRun(rest, "&\r\n")).empty();) {
        tokens.push_back(token);
    }
    return tokens;
}

NameAndValue SplitToken(std::string_view token) noexcept {
    NameAndValue result;
    result.name = NextRun(token, ": =\"");
    result.value = NextRun(token, "\"\r\n");
    return result;
}

}  // namespace wrb
