// Reading a firewall log file record by record, in constant memory.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace wrb {

// Reads from the file's position on, many records at a time. The file belongs to the caller and must outlive the
// reader. One thread at a time.
class PfwLogReader {
  public:
    // Throws for lack of memory.
    PfwLogReader(HANDLE file, std::size_t recordSize);

    // The next record, or null when the file has ended or this record cannot be read. A last record that the file cuts
    // short comes filled up with zeros, so that it does not have the markers of whatever was read before it. Valid
    // until the next call, and aligned for either record.
    const void* Next() noexcept;

  private:
    static constexpr std::size_t kBlockRecords = 64;

    std::size_t Read(std::size_t bytes) noexcept;
    bool Fill() noexcept;

    HANDLE m_file;
    std::size_t m_recordSize;
    std::unique_ptr<uint8_t[]> m_block;
    std::size_t m_filled = 0;
    std::size_t m_next = 0;
};

}  // namespace wrb
