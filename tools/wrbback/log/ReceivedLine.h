// One line of the debug log: from the message on the pipe to the text in the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wrb {

struct ReceivedLine {
    int64_t seconds = 0;   // since 1970-01-01 00:00 UTC
    uint32_t process = 0;  // id
    uint32_t thread = 0;   // id
    uint32_t level = 0;
    std::wstring sourceFile{};
    int32_t line = 0;
    std::wstring text{};
};

// Reads the fields of a "LOG_WRITE" message after the command name; a field that is not a number reads as 0. The source
// file is cut at 260 characters, the text at 8191. Nothing when fields are missing.
std::optional<ReceivedLine> ParseLogLine(std::wstring_view fields);

// The line in UTF-8, in local time, with its CR and LF:
//
//   YYYY MM/DD hh:mm:ss [process : thread] [class] text - [source file(line)]
//
// process and thread in hexadecimal, class one of F E W I D N, or the number of a level that has none. Texts are
// made visible (VisibleText.h).
std::string FormatLogLine(const ReceivedLine& line);

}  // namespace wrb
