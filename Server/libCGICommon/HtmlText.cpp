#include "HtmlText.h"

#include "Text.h"

namespace wrb {

std::string EscapeHtml(std::wstring_view text) {
    constexpr std::string_view kSpecial = "&<>\"'";
    constexpr std::string_view kReferences[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
    std::string escaped;
    for (const char character : WideToUtf8(text)) {
        const std::size_t special = kSpecial.find(character);
        escaped += special == kSpecial.npos ? std::string_view(&character, 1) : kReferences[special];
    }
    return escaped;
}

}  // namespace wrb
