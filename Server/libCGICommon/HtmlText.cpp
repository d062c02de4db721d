#include "HtmlText.h"

#include "Text.h"

namespace wrb {

std::string EscapeHtml(std::wstring_view text) {
    std::string escaped;
    for (const char character : WideToUtf8(text)) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

}  // namespace wrb
