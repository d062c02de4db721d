#include "CustomAction.h"

#include <algorithm>
#include <iterator>

#include "Text.h"

namespace wrb {
namespace {

constexpr const wchar_t* kSection = L"INI_MAJOR_VIRUS_TYPE_SECTION";
constexpr std::wstring_view kExploitName = L"CVE_Exploit";
constexpr int32_t kMostTypes = 1000;  // the keys have three digits
constexpr std::size_t kLongestPart = 256;
constexpr wchar_t kItemSeparator = L';';
constexpr wchar_t kPartSeparator = L'-';

std::wstring ReadPart(CINICache& ini, const wchar_t* key, const wchar_t* defaultText = L"") {
    wchar_t text[kLongestPart] = {};
    ini.readINIString(text, kSection, key, defaultText, static_cast<uint32_t>(std::size(text)));
    return text;
}

std::wstring ReadPart(CINICache& ini, const wchar_t* keyFormat, int32_t index) {
    wchar_t key[32];
    FormatInto(key, std::size(key), keyFormat, index);
    return ReadPart(ini, key);
}

bool HasItem(std::wstring_view list, std::wstring_view name) {
    while (!list.empty()) {
        const std::wstring_view item = list.substr(0, list.find(kItemSeparator));
        if (item.substr(0, item.find(kPartSeparator)) == name) {
            return true;
        }
        list.remove_prefix(std::min(list.size(), item.size() + 1));
    }
    return false;
}

void AppendMissingItem(std::wstring& list, const std::wstring& name, const std::wstring& first,
                       const std::wstring& second) {
    if (name.empty() || first.empty() || name == kExploitName || HasItem(list, name)) {
        return;
    }
    if (!list.empty() && list.back() != kItemSeparator) {
        list += kItemSeparator;
    }
    list.append(name).append(1, kPartSeparator).append(first);
    if (!second.empty()) {
        list.append(1, kPartSeparator).append(second);
    }
}

}  // namespace

void CompleteCustomAction(CINICache& ini, std::wstring& customAction) {
    const int32_t count = std::min(static_cast<int32_t>(ini.readINIInt(kSection, L"Count", 0)), kMostTypes);
    if (count <= 0) {
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        AppendMissingItem(customAction, ReadPart(ini, L"Name_%03d", i), ReadPart(ini, L"1st_Act_%03d", i),
                          ReadPart(ini, L"2nd_Act_%03d", i));
    }
    AppendMissingItem(customAction, ReadPart(ini, L"Universe", L"Universe"), ReadPart(ini, L"1st_Act_Universe"), {});
}

}  // namespace wrb
