// Reads a body of the kind "multipart/form-data" (RFC 7578): a form with files. Looks at memory alone.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cgi_GetParameter.h"

namespace wrb {

inline constexpr std::size_t kMostMultipartParts = 1000;
inline constexpr std::size_t kLongestPartHeaders = 16384;
inline constexpr std::size_t kLongestBoundary = 70;

struct MultipartPart {
    std::string name;
    std::optional<std::string> fileName;  // as the client gave it; nothing for a plain field
    std::string_view content;             // points into the body
};

// The boundary that a content type names; empty when there is none or it is too long.
std::string MultipartBoundary(std::string_view contentType);

// Appends the parts in their order. Text before the first boundary and after the closing one is ignored. On any
// result but kCgiFetched `parts` holds the parts before the fault.
CgiStatus ParseMultipart(std::string_view body, std::string_view boundary, std::vector<MultipartPart>& parts);

// What follows the last separator of a path of any system, without control characters and without blanks and dots at
// its end. Empty when nothing is left, as of "..".
std::wstring LastComponent(std::wstring_view fileName);

}  // namespace wrb
