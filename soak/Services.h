// The two service programs, started and stopped as an operator does it, and the times when each was away.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "ResourceUse.h"

namespace wrb::soak {

// Moments of a service, for judging what had to work: while a mark is undisturbed, the service has been up.
class PresenceLog {
  public:
    using Mark = uint64_t;

    Mark Now() const { return m_changes; }
    bool Undisturbed(Mark since) const { return since % 2 == 0 && since == m_changes; }

    void Leaves() { ++m_changes; }
    void IsBack() { ++m_changes; }

  private:
    std::atomic<Mark> m_changes{1};  // odd: away
};

// One program. Starts and stops belong to one thread, Uptime to all.
class Service {
  public:
    Service(std::wstring program, std::vector<std::wstring> arguments, std::vector<std::wstring> stopArguments,
            std::string ready)
        : m_program(std::move(program)),
          m_arguments(std::move(arguments)),
          m_stopArguments(std::move(stopArguments)),
          m_ready(std::move(ready)) {}

    // Throw std::runtime_error with the program's output when it fails. Call Uptime().Leaves() before stopping a
    // program that others use.
    void Start();
    void Stop();

    PresenceLog& Uptime() { return m_uptime; }
    const PresenceLog& Uptime() const { return m_uptime; }
    test::ResourceUse Use() const { return test::CurrentResourceUse(m_process->Handle()); }

    unsigned Stops() const { return m_stops; }

    // The sum of the numbers that follow (or, where `label` starts with a blank, precede) that label in the last lines
    // that the program printed each time it stopped: Total(" refused") of "handled 7, 3 refused" is 3.
    uint64_t Total(const std::string& label) const;

  private:
    const std::wstring m_program;
    const std::vector<std::wstring> m_arguments;
    const std::vector<std::wstring> m_stopArguments;
    const std::string m_ready;
    PresenceLog m_uptime;
    std::unique_ptr<test::ChildProcess> m_process;
    std::vector<std::string> m_lastLines;
    unsigned m_stops = 0;
};

// Runs a program of the project to its end; throws std::runtime_error when its exit code is not 0.
void RunProgram(const std::wstring& program, const std::vector<std::wstring>& arguments);

}  // namespace wrb::soak
