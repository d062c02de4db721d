// The two service programs: started and stopped as an operator does it, and ended or suspended as a fault does it.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "ResourceUse.h"

namespace wrb::soak {

// One program. All but Use belongs to one thread.
class Service {
  public:
    Service(std::wstring program, std::vector<std::wstring> arguments, std::vector<std::wstring> stopArguments,
            std::string ready)
        : m_program(std::move(program)),
          m_arguments(std::move(arguments)),
          m_stopArguments(std::move(stopArguments)),
          m_ready(std::move(ready)) {}

    // Throw std::runtime_error with the program's output when it fails.
    void Start();
    void Stop();

    // Ends the process with no warning. Throws std::runtime_error when it has ended by itself.
    void Kill();

    // Any thread. Empty while the program is not running.
    std::optional<test::ResourceUse> Use() const;

    uint32_t ProcessId() const { return GetProcessId(m_process->Handle()); }
    unsigned Stops() const { return m_stops; }
    unsigned Kills() const { return m_kills; }

    // The sum of the numbers that follow (or, where `label` starts with a blank, precede) that label in the last lines
    // that the program printed each time it stopped: Total(" refused") of "handled 7, 3 refused" is 3.
    uint64_t Total(const std::string& label) const;

  private:
    std::shared_ptr<test::ChildProcess> Running() const;
    void SetRunning(std::shared_ptr<test::ChildProcess> process);

    const std::wstring m_program;
    const std::vector<std::wstring> m_arguments;
    const std::vector<std::wstring> m_stopArguments;
    const std::string m_ready;
    mutable std::mutex m_lock;
    std::shared_ptr<test::ChildProcess> m_process;
    std::vector<std::string> m_lastLines;
    unsigned m_stops = 0;
    unsigned m_kills = 0;
};

// Runs a program of the project to its end; throws std::runtime_error when its exit code is not 0.
void RunProgram(const std::wstring& program, const std::vector<std::wstring>& arguments);

}  // namespace wrb::soak
