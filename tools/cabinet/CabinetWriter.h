// Makes cabinet files with the system's own writer.
#pragma once

#include <string>
#include <vector>

namespace wrb {

struct CabinetSource {
    std::string name;   // in the cabinet, at most 255 bytes of UTF-8; taken as it is, whatever it says
    std::wstring path;  // of the file that holds the data
};

// Writes all sources into one compressed (MSZIP) cabinet file, in their order; a file that is there already is
// replaced once all is well. Throws std::runtime_error that says what went wrong; nothing new is left then. Needs room
// for temporary files where the account keeps them, and beside `path` for the cabinet until it is complete. Any thread.
// Wine's writer refuses a cabinet in which no entry has any data.
void WriteCabinet(const std::wstring& path, const std::vector<CabinetSource>& sources);

}  // namespace wrb
