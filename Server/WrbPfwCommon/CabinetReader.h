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

// Where one entry's data goes. Nothing may be thrown.
class IEntryData {
  public:
    virtual ~IEntryData() = default;

    virtual bool Write(const void* data, uint32_t bytes) noexcept = 0;

    // The data has come to its end; true when it is complete.
    virtual bool Finish() noexcept = 0;
};

// What to do with the entries, which come in the cabinet's order.
class ICabinetVisitor {
  public:
    virtual ~ICabinetVisitor() = default;

    // False ends the reading as a failure. On true, `data` says where the entry goes: null passes over it unread. It
    // must live until the reading is over. May throw std::bad_alloc, which also ends the reading.
    virtual bool OnEntry(const CabinetEntry& entry, IEntryData*& data) = 0;
};

// Holds a cabinet file open, so that nobody changes it between one reading and the next. One thread at a time.
class CabinetReader {
  public:
    // `package`: path in the ANSI code page. False when it cannot be opened or is no file below 2 GiB.
    bool Open(const char* package);

    // Goes over all entries. True when the file is one whole, sound cabinet and the visitor and every data agreed.
    bool Read(ICabinetVisitor& visitor);

  private:
    FileHandle m_file;
};

}  // namespace wrb
