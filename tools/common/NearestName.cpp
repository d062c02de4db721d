#include "NearestName.h"

#include <algorithm>
#include <cwctype>
#include <numeric>
#include <vector>

#include "Text.h"

namespace wrb {
namespace {

// The number of letters that are changed, added or left out between the two.
std::size_t Distance(std::wstring_view left, std::wstring_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t changed = diagonal + (std::towlower(left[i]) == std::towlower(right[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::wstring_view NearestName(std::wstring_view text, std::span<const std::wstring_view> candidates) {
    std::size_t least = std::min<std::size_t>(3, text.size() / 3 + 1) + 1;
    std::wstring_view nearest;
    for (const std::wstring_view candidate : candidates) {
        if (const std::size_t distance = Distance(text, candidate); distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string DidYouMean(std::wstring_view nearest) {
    return nearest.empty() ? std::string() : "; did you mean \"" + WideToUtf8(nearest) + "\"?";
}

}  // namespace wrb
