// The named event that stops a service program: its owner and its sender.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "Handle.h"
#include "SharedBlock.h"

namespace wrb {

inline constexpr wchar_t kBackEndStopEvent[] = L"Calloway_Warrenby_BackEnd_Stop_Event";

// Sets the event of this process, as a stop by another one does. Nothing happens while there is none. Any thread.
void RequestStop();

// For a service: the end of a user's session, of which the system tells every process, does not set the event.
void IgnoreEndOfSession();

// How long a stop may take when nobody says.
inline constexpr unsigned kStopSeconds = 60;

// What both sides tell each other, under the event's name with "_Terms" at its end.
struct StopTerms {
    std::atomic<uint32_t> milliseconds{0};  // how long the sender waits; 0: as the program was told at its start
    std::atomic<uint32_t> gaveUp{0};        // 1: the program ended before it had finished
    std::atomic<uint32_t> processId{0};     // of the program
};

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

    // How long the stop may take, once Wait has returned: what the sender asked for, else `otherwise`. A tenth of what
    // the sender asked for, but no more than a second, is left to the sender, which waits for the program's end.
    std::chrono::milliseconds Limit(std::chrono::milliseconds otherwise) const;

    // Tells the sender that the program ends before it has finished.
    void GiveUp() const { m_terms->gaveUp = 1; }

  private:
    KernelHandle m_event;
    SharedBlock<StopTerms> m_terms;
};

enum class StopResult { Stopped, NotRunning, TimedOut, GaveUp, Failed };

// The sender: signals the running program and waits until it has ended. With `seconds` the program may take no longer
// than that; without, it takes the time that it was told, and the sender waits for kStopSeconds. GaveUp: it has ended,
// but not finished. Failed: see GetLastError.
StopResult StopRunning(const wchar_t* name, std::optional<unsigned> seconds);

// The process that owns the event. 0: it does not run, or this account may not ask.
uint32_t RunningProcess(const wchar_t* name);

}  // namespace wrb
