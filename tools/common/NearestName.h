// What somebody may have meant by a name that does not exist.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace wrb {

// The candidate that is nearest to `text` by letters that are changed, added or left out, upper and lower case alike;
// empty when none is near.
std::wstring_view NearestName(std::wstring_view text, std::span<const std::wstring_view> candidates);

// For the end of a message about a name that does not exist: `; did you mean "NEAREST"?`, UTF-8; empty when none is
// near.
std::string DidYouMean(std::wstring_view nearest);

}  // namespace wrb
