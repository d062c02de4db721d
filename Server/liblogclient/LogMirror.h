// The mirror file of the debug log: a copy of every admitted line, for a host that wants one beside the log service.
#pragma once

#include <cstdint>

#include "Handle.h"

namespace wrb {

// UTF-16LE text; a new file begins with a byte order mark. The file may be read, written and moved by others while it
// is open. Each line is one append, so that lines of different threads and processes do not mix.
class LogMirror {
  public:
    explicit LogMirror(const wchar_t* path) noexcept;

    bool IsOpen() const noexcept { return static_cast<bool>(m_file); }

    // Appends "YEAR MONTH/DAY HOUR:MINUTE:SECOND [process : thread] TEXT - [SOURCE(LINE)]" and an end of line. Local
    // time, ids in hexadecimal. On a full disk the line is lost.
    void Append(const wchar_t* sourceFile, uint32_t line, const wchar_t* text) const noexcept;

  private:
    FileHandle m_file;
};

}  // namespace wrb
