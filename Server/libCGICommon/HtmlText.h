// Wide text as UTF-8 for a page.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

// Safe as HTML text and inside a quoted attribute.
std::string EscapeHtml(std::wstring_view text);

}  // namespace wrb
