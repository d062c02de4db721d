// The INI text that goes to agents: "[section]" lines and "key=value" lines, each ended by a single "\n", no blank
// line in between. Values stand as they are: nothing is quoted or escaped, an empty value leaves "key=".
//
// Everything here appends. Throws only for lack of memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// One line each. The section line is cut at 1023 characters, its line end included; an integer is shown signed; a
// bool is "1" or "0".
void AppendIniSection(std::wstring& out, std::wstring_view name);
void AppendIniString(std::wstring& out, std::wstring_view key, std::wstring_view value);
void AppendIniInt(std::wstring& out, std::wstring_view key, int32_t number);
void AppendIniBool(std::wstring& out, std::wstring_view key, bool bit);
