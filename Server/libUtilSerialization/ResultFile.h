// ResultFile: the receiver's side of a message in file mode, the file that a message names.
//
// Refused, and then neither read nor deleted: a path that AcceptedSpillPath does not allow, and what is not a plain
// file with a single name (a directory, a link, a second hard link to some other file). Once accepted, the file is
// ours: it is unmapped, closed and deleted with the object.
//
// Errors: false or null, with a log line that says what was wrong. One thread at a time.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "Block.h"
#include "Handle.h"

namespace wrb {

class ResultFile {
  public:
    static constexpr uint64_t kMapFrom = 52428800;  // bytes; smaller files are read, others mapped

    ResultFile() = default;
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;
    ~ResultFile();

    // Opens the file for reading and takes its size.
    bool Open(const std::wstring& path);

    uint64_t Size() const noexcept { return m_size; }

    // The whole file, Size() bytes.
    Block Read();

    // The whole file, Size() bytes; valid as long as the object. Takes the size anew.
    uint8_t* Map();

  private:
    bool OpenFor(DWORD access);
    bool TakeSize();

    std::wstring m_path;  // empty until the file is ours
    FileHandle m_file;
    KernelHandle m_mapping;
    uint64_t m_size = 0;
    MappedView m_view;
};

}  // namespace wrb
