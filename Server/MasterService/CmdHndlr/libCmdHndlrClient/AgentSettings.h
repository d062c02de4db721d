// Requests for settings of an agent that the server's own files and state take part in.
#pragma once

#include <string>

namespace wrb {

// The sections of cmdhm_GetVexorSetting, with the server's behaviour policies where there are any.
bool GetVexorSetting(std::wstring& output, const wchar_t* uid);

}  // namespace wrb
