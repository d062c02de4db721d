// From the text of a query or of a form's body to tokens, to names and values, to decoded text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// Turns every "+" into a blank, in place, and splits at "&", CR and LF; there are no empty tokens. The text ends at its
// first NUL byte; what follows is not changed. The tokens point into `text`.
std::vector<std::string_view> SplitQuery(char* text, std::size_t size);

struct NameAndValue {
    std::string_view name;
    std::string_view value;
};

// The two parts of a token, not decoded yet. The name is the first run of characters other than ":", blank, "=" and the
// double quote. The value follows one separator: the next run of characters other than the double quote, CR and LF.
NameAndValue SplitToken(std::string_view token) noexcept;

// Percent-decodes a text without NUL bytes, by the rules of cgi_Helpers.h. Linear in its length; throws only for lack
// of memory.
std::wstring PercentDecode(std::string_view text);

}  // namespace wrb
