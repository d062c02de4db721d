// Percent-decoding of whole texts; cgi_Helpers.h has the exported form and the rules.
#pragma once

#include <string>
#include <string_view>

// `text` holds no NUL byte. Linear in its length; throws only for lack of memory.
std::wstring cgi_UnEscapeUrl(std::string_view text);
