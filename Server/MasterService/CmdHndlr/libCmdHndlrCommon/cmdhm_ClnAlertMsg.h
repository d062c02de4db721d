// The texts that agents show to their users, one file each. docs/commands.md describes the files and the encoding. Any
// thread. Throws only for lack of memory.
#pragma once

#include <cstdint>
#include <string>

// The alert type that asks for all texts at once.
inline constexpr int32_t kAllAlertMessages = 128;

// Puts the text of one alert type, or the section with all of them, alone into `output` and, after a success, clears
// the agent's alert-message bit. A type that is not known has the text of type 0. With `encode` 0 a single text comes
// as it is; the section is always encoded. Returns 1, or 0 when there is no home folder; a file that cannot be opened
// within two seconds, all files together, is an empty text with a log line. A failure to clear the bit does not change
// the result.
int cmdhm_GetClnAlertMsg(std::wstring& output, const wchar_t* uid, int32_t alertType, int encode);

// The text of one file up to its first NUL, with line feeds for line ends, alone in `output`. False when there is no
// home folder, or no memory for the timer: a file that is missing or unreadable is an empty text and a success.
bool cmdhm_GetClnAlertMsgIni(std::wstring& output, const wchar_t* fileName);

namespace wrb {

// The section "Alert Message" with the texts of all files, alone in `output`. False, with empty texts, as above.
bool MakeAlertSection(std::wstring& output);

}  // namespace wrb
