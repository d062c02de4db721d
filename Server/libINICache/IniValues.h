// Values of an INI file as C++ values.
#pragma once

#include <cstdint>
#include <string>

#include "INICache.h"

namespace wrb {

// The whole text of a key, however long the file has it. Throws only for lack of memory.
std::wstring ReadIniText(CINICache& ini, const wchar_t* section, const wchar_t* key, const wchar_t* defaultText = L"");

// A number from 1 to `most` in the section "INI_SERVER_SECTION" of the server INI. `byDefault` when it is missing or
// out of range, and for lack of memory.
uint32_t ServerIniNumber(const char* key, uint32_t byDefault, uint32_t most) noexcept;

}  // namespace wrb
