#include "IniList.h"

#include <algorithm>

#include "IniText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSeparator = L'|';

// Calls `visit` for each item with its number; returns how many there were.
template <typename Visit>
int32_t ForEachItem(std::wstring_view list, Visit visit) {
    int32_t count = 0;
    for (std::wstring_view item = list.substr(0, list.find(kSeparator)); !item.empty();
         item = list.substr(0, list.find(kSeparator))) {
        visit(item, static_cast<std::size_t>(count));
        ++count;
        list.remove_prefix(std::min(list.size(), item.size() + 1));
    }
    return count;
}

}  // namespace

std::wstring FormatIniKey(const wchar_t* format, std::size_t number) {
    return FormatWide(format, static_cast<int>(number));
}

void AppendIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list,
                   const IniItemProtection& protect) {
    const int32_t count = ForEachItem(list, [&](std::wstring_view item, std::size_t number) {
        AppendIniString(out, FormatIniKey(keys.item, number),
                        std::wstring_view(protect(item)).substr(0, kLongestProtectedItem));
    });
    AppendIniInt(out, keys.count, count);
}

void AppendCountedIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list) {
    AppendIniInt(out, keys.count, ForEachItem(list, [](std::wstring_view, std::size_t) {}));
    ForEachItem(list, [&](std::wstring_view item, std::size_t number) {
        AppendIniString(out, FormatIniKey(keys.item, number), item);
    });
}

}  // namespace wrb
