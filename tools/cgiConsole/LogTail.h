// The last lines of the debug log's current file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// A line of the file, in UTF-8 (tools/wrbback/log/ReceivedLine.h has the form).
struct LogTailLine {
    std::string time;     // "2024 01/31 23:59:59"
    std::string process;  // process and thread, hexadecimal: "00001a2c : 00000b10"
    std::string level;    // F E W I D N, or a number
    std::string text;     // and the source
};

struct LogTail {
    bool isReadable = false;  // else there is no such file, or this account may not read it
    std::vector<LogTailLine> lines;
};

// At most the last `count` lines of at least that weight ("E": errors and fatal ones; empty: all) among the last 1 MiB
// of the file.
LogTail ReadLogTail(const std::wstring& folder, std::string_view level, std::size_t count);

}  // namespace wrb
