#include "VisibleText.h"

#include "Text.h"

namespace wrb {
namespace {

// Control characters, line and paragraph separators, and the marks that change the direction of writing.
bool NeedsEscape(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
           c == 0x200E || c == 0x200F || c == 0x061C || c == 0xFEFF;
}

}  // namespace

std::wstring VisibleText(std::wstring_view text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (const wchar_t c : text) {
        if (c == L'\n') {
            escaped += L"\\n";
        } else if (c == L'\r') {
            escaped += L"\\r";
        } else if (c == L'\t') {
            escaped += L"\\t";
        } else if (NeedsEscape(c)) {
            escaped += FormatWide(L"\\u%04X", static_cast<unsigned>(c));
        } else {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace wrb
