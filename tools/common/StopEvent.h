// The named event that stops a service program: its owner and its sender.
#pragma once

#include <cstdint>

#include "Handle.h"

namespace wrb {

inline constexpr wchar_t kBackEndStopEvent[] = L"Calloway_Warrenby_BackEnd_Stop_Event";

// Owns the event in the service program, and sets it on Ctrl-C, on closing the console and at the end of the session.
// At most one object at a time in a process.
class StopEvent {
  public:
    StopEvent() = default;
    ~StopEvent();
    StopEvent(const StopEvent&) = delete;
    StopEvent& operator=(const StopEvent&) = delete;

    // SYSTEM, the administrators and the account of this process may set the event. False: see GetLastError;
    // ERROR_ALREADY_EXISTS means that the program is running on this machine, ERROR_ACCESS_DENIED that it runs under
    // another account.
    bool Create(const wchar_t* name);

    void Wait() const;

  private:
    KernelHandle m_event;
};

enum class StopResult { Stopped, NotRunning, TimedOut, Failed };

// The sender: signals the running program and waits until it has ended. Failed: see GetLastError.
StopResult StopRunning(const wchar_t* name, uint32_t milliseconds);

}  // namespace wrb
