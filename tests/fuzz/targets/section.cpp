// The lines of an INI section: each has a key of its own, and reading them again gives the same keys.
#include <algorithm>
#include <set>
#include <vector>

#include "Fuzz.h"
#include "IgnoringCase.h"
#include "ProfileAccess.h"
#include "Text.h"

namespace {

std::vector<std::string> KeysOf(const std::string& lines) {
    std::vector<std::string> keys;
    for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1) {
        const std::size_t end = lines.find('\n', at);
        const std::size_t equals = lines.find('=', at);
        REQUIRE(end != lines.npos && equals < end);
        keys.push_back(lines.substr(at, equals - at));
    }
    return keys;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    std::string input = BytesInput(data, size);
    std::ranges::replace(input, '\n', ' ');  // the system ends lines there
    std::string lines = wrb::SectionLines(input);
    const std::vector<std::string> keys = KeysOf(lines);
    std::set<std::wstring, wrb::LessIgnoringCase> different;
    for (const std::string& key : keys) {
        REQUIRE(!key.empty() && different.insert(wrb::AnsiToWide(key)).second);
    }
    std::ranges::replace(lines, '\n', '\0');
    REQUIRE(KeysOf(wrb::SectionLines(lines)) == keys);
    return 0;
}
