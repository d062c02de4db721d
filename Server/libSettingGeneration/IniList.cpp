#include "IniList.h"

#include <algorithm>
#include <vector>

#include "DebugLog.h"
#include "IniText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSeparator = L'|';

std::vector<std::wstring_view> ItemsOf(const IniListKeys& keys, std::wstring_view list) {
    std::vector<std::wstring_view> items;
    for (; !list.empty() && list.front() != kSeparator;
         list.remove_prefix(std::min(list.size(), items.back().size() + 1))) {
        if (items.size() == kMostListItems) {
            WRB_LOG(kLogWarning, L"%s - items beyond the first %d are left out", std::wstring(keys.count).c_str(),
                    static_cast<int>(kMostListItems));
            break;
        }
        items.push_back(list.substr(0, list.find(kSeparator)));
    }
    return items;
}

}  // namespace

std::wstring FormatIniKey(const wchar_t* format, std::size_t number) {
    return FormatWide(format, static_cast<int>(number));
}

void AppendProtectedIniList(std::wstring& out, const IniListKeys& keys, std::wstring_view list,
                            const IniItemProtection& protect) {
    const std::vector<std::wstring_view> items = ItemsOf(keys, list);
    int32_t cut = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::wstring item = protect(items[i]);
        cut += item.size() > kLongestProtectedItem ? 1 : 0;
        AppendIniString(out, FormatIniKey(keys.item, i), std::wstring_view(item).substr(0, kLongestProtectedItem));
    }
    AppendIniInt(out, keys.count, static_cast<int32_t>(items.size()));
    if (cut > 0) {
        WRB_LOG(kLogWarning, L"%s - %d items are too long and are cut at %d characters",
                std::wstring(keys.count).c_str(), cut, static_cast<int>(kLongestProtectedItem));
    }
}

void AppendPlainIniList(std::wstring& out, const IniListKeys& keys, std::wstring_view list) {
    const std::vector<std::wstring_view> items = ItemsOf(keys, list);
    AppendIniInt(out, keys.count, static_cast<int32_t>(items.size()));
    for (std::size_t i = 0; i < items.size(); ++i) {
        AppendIniString(out, FormatIniKey(keys.item, i), items[i]);
    }
}

}  // namespace wrb
