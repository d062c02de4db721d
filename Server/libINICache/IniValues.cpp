#include "IniValues.h"

#include <new>

namespace wrb {
namespace {

constexpr uint32_t kShortText = 512;
constexpr uint32_t kLongestText = 65535;

}  // namespace

std::wstring ReadIniText(CINICache& ini, const wchar_t* section, const wchar_t* key, const wchar_t* defaultText) {
    wchar_t text[kShortText] = L"";
    if (ini.readINIString(text, section, key, defaultText, kShortText) < kShortText - 1) {
        return text;
    }
    std::wstring whole(kLongestText + 1, L'\0');
    ini.readINIString(whole.data(), section, key, defaultText, kLongestText + 1);
    return whole.c_str();
}

uint32_t ServerIniNumber(const char* key, uint32_t byDefault, uint32_t most) noexcept {
    try {
        const uint32_t number = ServerIniCache().readINIInt("INI_SERVER_SECTION", key, static_cast<int32_t>(byDefault));
        return number >= 1 && number <= most ? number : byDefault;
    } catch (const std::bad_alloc&) {
        return byDefault;
    }
}

}  // namespace wrb
