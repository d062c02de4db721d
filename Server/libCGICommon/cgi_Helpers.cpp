#include "cgi_Helpers.h"

#include <algorithm>
#include <exception>
#include <string>

#include "HomeFolder.h"
#include "QueryTokens.h"

static_assert(kHomeDirCapacity == wrb::kHomeFolderCapacity);

bool cgi_GetHomeDir(wchar_t* buffer, uint32_t capacity) {
    if (buffer == nullptr || capacity == 0) {
        return false;
    }
    buffer[0] = L'\0';
    try {
        const std::wstring folder = wrb::HomeFolder();
        const bool fits = !folder.empty() && folder.size() < capacity;
        buffer[fits ? folder.copy(buffer, folder.size()) : 0] = L'\0';
        return fits;
    } catch (const std::exception&) {  // an exported function throws nothing
        return false;
    }
}

uint32_t cgi_UnEscapeUrl(const char* text, wchar_t* buffer, uint32_t capacity) {
    if (buffer == nullptr || capacity == 0) {
        return 0;
    }
    buffer[0] = L'\0';
    try {
        const std::wstring decoded = wrb::PercentDecode(std::string_view(text != nullptr ? text : ""));
        const std::size_t length = decoded.copy(buffer, std::min<std::size_t>(decoded.size(), capacity - 1));
        buffer[length] = L'\0';
        return static_cast<uint32_t>(length);
    } catch (const std::exception&) {  // an exported function throws nothing
        return 0;
    }
}
