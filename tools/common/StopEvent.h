// The named event that stops a service program, seen from both sides.
#pragma once

#include <cstdint>

#include "Handle.h"

namespace wrb {

inline constexpr wchar_t kBackEndStopEvent[] = L"Calloway_Warrenby_BackEnd_Stop_Event";

// The program's side: owns the event, and turns Ctrl-C, the closing of the console and the end of the session into it.
// At most one object at a time in a process.
class StopEvent {
  public:
    StopEvent() = default;
    ~StopEvent();
    StopEvent(const StopEvent&) = delete;
    StopEvent& operator=(const StopEvent&) = delete;

    // False: GetLastError tells; ERROR_ALREADY_EXISTS means that the program is running on this machine.
    bool Create(const wchar_t* name);

    void Wait() const;

  private:
    KernelHandle m_event;
};

enum class StopResult { Stopped, NotRunning, TimedOut, Failed };

// The other side: signals the running program and waits until it has gone. Failed: GetLastError tells.
StopResult StopRunning(const wchar_t* name, uint32_t milliseconds);

}  // namespace wrb
