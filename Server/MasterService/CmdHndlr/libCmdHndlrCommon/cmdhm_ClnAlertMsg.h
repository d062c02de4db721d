// The texts that agents show to their users, as the administrator worded them: one file each in the folder "admin"
// under the server's home folder, UTF-16LE, of which the first 4096 bytes count.
//
// An encoded text is the message with " !BASE64ED! " in front, its UTF-16LE bytes in base64, padded and on one line.
// Any thread. Nothing throws but for lack of memory.
#pragma once

#include <cstdint>
#include <string>

// The alert type that asks for all texts at once.
inline constexpr int32_t kAllAlertMessages = 128;

// Puts the text of one alert type, or the section with all of them, alone into `output` and, after a success, clears
// the agent's alert-message bit. A type that is not known has the text of type 0. With `encode` 0 a single text comes
// as it is; the section is always encoded. Returns 1, or 0 when there is no home folder; a file that cannot be read is
// an empty text. What becomes of the bit does not show in the result.
int cmdhm_GetClnAlertMsg(std::wstring& output, const wchar_t* uid, int32_t alertType, int encode);

// The text of one file up to its first NUL, with line feeds for line ends, alone in `output`. False only when there is
// no home folder: a file that is missing or unreadable is an empty text and a success.
bool cmdhm_GetClnAlertMsgIni(std::wstring& output, const wchar_t* fileName);

namespace wrb {

// The section "Alert Message" with the texts of all files, alone in `output`. False when none of them could be asked
// for; the texts are then empty.
bool MakeAlertSection(std::wstring& output);

}  // namespace wrb
