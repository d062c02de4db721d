// Where a program runs: under the service manager, or on a console.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ConsoleQueue.h"
#include "ServiceSpec.h"

namespace wrb {

// Tells how far the program is. A service writes events and reports its state to the manager; on a console the texts of
// the events are printed, information to the standard output, warnings and errors to the standard error.
class Stage {
  public:
    Stage(const ServiceSpec& spec, ConsoleQueue& console) : m_spec(spec), m_console(console) {}

    // A crash leaves a dump in Log\Dumps of the home folder and an event. Called once; the object must live until the
    // process ends.
    void DumpOnCrash() const;

    // One of EventMessages.h with its texts. Any thread.
    void Tell(uint32_t event, const std::vector<std::wstring>& texts) const noexcept;

    // The program cannot serve. Returns `exitCode`.
    int Refuse(StartFault fault, const std::string& why, int exitCode) const;

    // The stop event, or the pipe of that name for people, cannot be made; `error` is the system's. Returns
    // kExitFailed.
    int RefuseAtStopEvent(uint32_t error) const;
    int RefuseAtPipe(const std::string& pipe, uint32_t error) const;

    void Serving(const std::string& how) const;       // "serving with 20 workers"
    void Stopping() const;                            // nothing is accepted any more
    void Stopped(const std::string& counters) const;  // all is finished

    // The process ends at once, before it has finished. Returns `what`, for the watchdog to print.
    std::string GaveUp(const std::string& what) const;

  private:
    const ServiceSpec& m_spec;
    ConsoleQueue& m_console;
};

}  // namespace wrb
