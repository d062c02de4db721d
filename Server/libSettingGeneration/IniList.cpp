#include "IniList.h"

#include <algorithm>

#include "IniText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSeparator = L'|';

}  // namespace

void AppendIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list,
                   const IniItemProtection& protect) {
    int32_t count = 0;
    for (std::wstring_view item = list.substr(0, list.find(kSeparator)); !item.empty();
         item = list.substr(0, list.find(kSeparator))) {
        AppendIniString(out, FormatWide(keys.item, count),
                        std::wstring_view(protect(item)).substr(0, kLongestProtectedItem));
        ++count;
        list.remove_prefix(std::min(list.size(), item.size() + 1));
    }
    AppendIniInt(out, keys.count, count);
}

}  // namespace wrb
