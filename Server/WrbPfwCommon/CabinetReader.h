// Reading one cabinet file through the system's cabinet library.
#pragma once

#include <cstdint>
#include <string_view>

#include "Handle.h"

namespace wrb {

// What the cabinet says of an entry; none of it has been checked.
struct CabinetEntry {
    std::string_view name;
    bool nameIsUtf8;
    int64_t bytes;
};

enum class EntryAction { Unpack, PassOver, Abort };

// Takes the entries one at a time, in the cabinet's order.
class ICabinetVisitor {
  public:
    virtual ~ICabinetVisitor() = default;

    // Abort ends the reading as a failure. May throw std::bad_alloc, which also ends it.
    virtual EntryAction OnEntry(const CabinetEntry& entry) = 0;

    // The data of an entry to unpack, piece by piece, and its end. False ends the reading as a failure.
    virtual bool Write(const void*, uint32_t) noexcept { return false; }
    virtual bool Finish() noexcept { return false; }
};

// Holds a cabinet file open, so that nobody changes it between one reading and the next. One thread at a time.
class CabinetReader {
  public:
    // `package`: path in the ANSI code page. False when it cannot be opened or is no file below 2 GiB.
    bool Open(const char* package);

    // Goes over all entries. True when the file is one whole, sound cabinet and the visitor took every entry.
    bool Read(ICabinetVisitor& visitor);

  private:
    FileHandle m_file;
    int64_t m_size = 0;
};

}  // namespace wrb
