// Makes cabinet files with the system's own writer.
#pragma once

#include <string>
#include <vector>

namespace wrb {

struct CabinetSource {
    std::string name;   // in the cabinet, at most 255 bytes of UTF-8; used unchanged, not checked
    std::wstring path;  // of the file that holds the data
};

// Writes all sources into one compressed (MSZIP) cabinet file, in their order. An existing file is replaced when the
// new one is complete. Throws std::runtime_error with the reason and leaves no new file. Needs space for temporary
// files in the account's temporary folder, and in the folder of `path` for the incomplete cabinet. Any thread. Wine's
// writer refuses a cabinet in which no entry has any data.
void WriteCabinet(const std::wstring& path, const std::vector<CabinetSource>& sources);

}  // namespace wrb
