// What every function of this library throws.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace wrb {

enum class SqlFailure : uint8_t {
    Other,
    Busy,          // another connection holds a lock for longer than the time-out
    Full,          // no room on the disk
    Io,            // the disk failed
    Memory,        // no memory
    CannotOpen,    // no such file, folder or server, or no right to it
    NotADatabase,  // the file has another format
    Damaged,       // the file is corrupt
    Constraint,    // a key, a check or a trigger refused the row
    Conflict,      // another transaction came first; this one was rolled back
    Disconnected,  // the connection is of no use any more: the server ended it, or the database takes no writes by it
};

class SqlError : public std::runtime_error {
  public:
    // `text` names the database and holds the engine's own words, never a bound value or a password.
    SqlError(SqlFailure failure, const std::string& text) : std::runtime_error(text), m_failure(failure) {}

    SqlFailure Failure() const noexcept { return m_failure; }

  private:
    SqlFailure m_failure;
};

}  // namespace wrb
