// Reading one cabinet file through the system's cabinet library.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

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

// Reads a cabinet file that the caller holds open. One thread at a time.
class CabinetReader {
  public:
    // `package`: readable, and open as long as the reader is used. False when it is no file below 2 GiB.
    bool Open(HANDLE package);

    // Goes over all entries. True when the file is one whole, sound cabinet and the visitor took every entry.
    bool Read(ICabinetVisitor& visitor);

  private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
    int64_t m_size = 0;
};

}  // namespace wrb
