// The file of a recording: written record by record, read through a view. docs/wire-formats.md has the layout.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Handle.h"
#include "RecordingFormat.h"

namespace wrb {

class RecordingWriter {
  public:
    // A new file, which only SYSTEM, the administrators and the account of this process may open. `replaces`: also in
    // the place of one that is there. False: GetLastError tells.
    bool Create(const std::wstring& path, bool replaces, const RecordingHead& head);

    // Both return false when the bytes cannot be written; GetLastError tells.
    bool WriteRecord(std::span<const uint8_t> record);
    bool WriteCount(RecordKind kind, uint64_t count);

  private:
    FileHandle m_file;
};

// A file as bytes, for as long as the object lives. Nobody can write to it meanwhile.
class FileView {
  public:
    // Throws std::runtime_error with the system's text.
    explicit FileView(const std::wstring& path);

    std::span<const uint8_t> Bytes() const;

  private:
    FileHandle m_file;
    KernelHandle m_section;
    MappedView m_view;
    std::size_t m_bytes = 0;
};

// The record at the start of `bytes`, with its head. Empty: there is no whole one.
std::span<const uint8_t> FirstRecord(std::span<const uint8_t> bytes) noexcept;

struct Recording {
    RecordingHead head;
    std::vector<RecordView> commands;  // in the order of their ends
    uint64_t missed = 0;
    bool isWhole = false;  // false: the file is cut short
};

// The views are parts of `bytes`. Throws std::runtime_error when it is no recording of a known version.
Recording ReadRecording(std::span<const uint8_t> bytes);

}  // namespace wrb
