#include "IniText.h"

#include <algorithm>

namespace {

constexpr std::size_t kSectionLineLimit = 1023;

}  // namespace

void AppendIniSection(std::wstring& out, std::wstring_view name) {
    const std::size_t start = out.size();
    out.append(1, L'[').append(name).append(L"]\n");
    out.resize(std::min(out.size(), start + kSectionLineLimit));
}

void AppendIniString(std::wstring& out, std::wstring_view key, std::wstring_view value) {
    out.append(key).append(1, L'=').append(value).append(1, L'\n');
}

void AppendIniInt(std::wstring& out, std::wstring_view key, int32_t number) {
    AppendIniString(out, key, std::to_wstring(number));
}

void AppendIniBool(std::wstring& out, std::wstring_view key, bool bit) {
    AppendIniString(out, key, bit ? L"1" : L"0");
}
