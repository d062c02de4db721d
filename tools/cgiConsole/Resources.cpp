#include "Resources.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace wrb {

std::string_view ResourceText(const char* name) {
    // The number of RT_RCDATA, whose macro is for the wide functions here.
    constexpr WORD kRawData = 10;
    const HRSRC place = FindResourceA(nullptr, name, MAKEINTRESOURCEA(kRawData));
    const HGLOBAL loaded = place == nullptr ? nullptr : LoadResource(nullptr, place);
    const void* const bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr) {
        throw std::logic_error(std::string("no resource ") + name);
    }
    return {static_cast<const char*>(bytes), SizeofResource(nullptr, place)};
}

std::string ResourceVersion(const char* name) {
    uint32_t hash = 2166136261;  // FNV-1a
    for (const char byte : ResourceText(name)) {
        hash = (hash ^ static_cast<uint8_t>(byte)) * 16777619;
    }
    char text[9];
    std::snprintf(text, sizeof text, "%08x", hash);
    return text;
}

}  // namespace wrb
