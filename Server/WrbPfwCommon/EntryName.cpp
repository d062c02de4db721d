#include "EntryName.h"

#include <algorithm>

#include "LocalPath.h"
#include "Text.h"

namespace wrb {
namespace {

bool IsPlainRelativePath(std::wstring_view path) {
    const std::size_t separator = path.find(L'\\');
    return IsPlainFileName(path.substr(0, separator)) &&
           (separator == std::wstring_view::npos || IsPlainRelativePath(path.substr(separator + 1)));
}

}  // namespace

std::optional<EntryName> CheckEntryName(std::string_view stored, bool utf8) {
    EntryName name;
    name.wide = utf8 ? Utf8ToWide(stored) : AnsiToWide(stored);
    std::ranges::replace(name.wide, L'/', L'\\');
    name.narrow = WideToAnsi(name.wide);
    // A character that is not in the code page may be converted to another one, even to a separator.
    if (!IsPlainRelativePath(name.wide) || AnsiToWide(name.narrow) != name.wide) {
        return std::nullopt;
    }
    return name;
}

}  // namespace wrb
