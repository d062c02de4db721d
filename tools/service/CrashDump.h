// What stays of a program that crashes: a minidump, and what it was doing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace wrb {

inline constexpr std::size_t kMostDumps = 10;

struct Crash {
    std::wstring exception;  // its code in hexadecimal
    std::wstring work;       // of the thread, see CrashNote
    std::wstring dump;       // full path, or why there is none
};

// From now on an unhandled exception, std::terminate or abort on any thread leaves a minidump in `folder`, of which the
// latest kMostDumps stay, then calls `tell`, then ends the process with the exception's code, after a minute at most. A
// thread of its own does this, because that of the fault may have no stack left. The dump is written by this program in
// another process, as "service dump". The file's name begins with `program`. Called once in a process.
void WriteDumpOnCrash(const std::wstring& program, const std::wstring& folder,
                      std::function<void(const Crash& crash)> tell);

// What "service dump" is told.
struct DumpRequest {
    uint32_t process = 0;
    uint32_t thread = 0;     // of the fault
    uintptr_t pointers = 0;  // address of its EXCEPTION_POINTERS in that process
    std::wstring file;       // must not exist
    std::wstring note;       // becomes the comment in the dump
};

// Returns 0 or the Windows error.
int WriteDump(const DumpRequest& request);

// Says what this thread works on while the object lives: the text up to its first TAB, of which the first 64 characters
// count. The text must live as long. Not nested.
class CrashNote {
  public:
    explicit CrashNote(const wchar_t* text) noexcept;
    ~CrashNote();
    CrashNote(const CrashNote&) = delete;
    CrashNote& operator=(const CrashNote&) = delete;
};

}  // namespace wrb
