// A program of the project run beside a test.
#pragma once

#include <windows.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Handle.h"

namespace wrb::test {

// Starts `program` (a file name in the folder of the test program) with `arguments`. Its standard output and error go
// to one file, which goes away with the object, or to `output`; the program ends with the object, if it still runs.
class ChildProcess {
  public:
    // Throws when it cannot. `output` must be inheritable.
    ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments, HANDLE output = nullptr);
    ~ChildProcess();

    // The exit code, or nothing while it still runs after the time-out.
    std::optional<DWORD> WaitForExit(std::chrono::milliseconds timeout = kPatience) const;

    HANDLE Handle() const { return m_process.Get(); }

    // All that it has printed so far, as UTF-8.
    std::string Output() const;

    // True as soon as the output contains `part`; false when the program ended or the time was up without it.
    bool WaitForOutput(const std::string& part, std::chrono::milliseconds timeout = kPatience) const;

    static constexpr std::chrono::milliseconds kPatience{60'000};

  private:
    std::wstring m_outputPath;
    KernelHandle m_process;
};

// The folder of the test program, with a backslash at its end.
std::wstring ProgramFolder();

}  // namespace wrb::test
