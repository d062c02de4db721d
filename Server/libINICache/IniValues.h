// Values of an INI file as C++ values.
#pragma once

#include <string>

#include "INICache.h"

namespace wrb {

// The whole text of a key, however long the file has it. Throws only for lack of memory.
std::wstring ReadIniText(CINICache& ini, const wchar_t* section, const wchar_t* key, const wchar_t* defaultText = L"");

}  // namespace wrb
