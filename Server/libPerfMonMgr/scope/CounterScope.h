// What a command handler does to the performance counters, written once.
#pragma once

#include <windows.h>

#include <cstdint>

#include "Clock.h"
#include "HandlerCounterBlock.h"

namespace wrb {

// Counts one call of a command from construction to destruction: the first statement of a handler.
//
//     wrb::CounterCall call(static_cast<uint32_t>(CommandSlot::CMDHL_GET_MS_CFG));
//
// It counts the call at once. At its end it counts its run time, takes the counters' mutex (a mutex whose owner died
// counts as taken), books the time and releases the block. A mutex that is held for more than 50 ms is not waited for:
// the call's time is kept in the process, and the next call that gets the mutex books it. Without a counter block, or
// with a slot of 128 or more, the call goes uncounted.
class CounterCall {
  public:
    // Throws OS::CException with E_FAIL when the process has no counter manager.
    explicit CounterCall(uint32_t slot, const IClock& clock = SystemClock());
    ~CounterCall();
    CounterCall(const CounterCall&) = delete;
    CounterCall& operator=(const CounterCall&) = delete;

    // For a command without an answer: its result, once. A failure is counted.
    void ReportResult(bool succeeded) noexcept;

    // For a report of an agent: what no service took of it, once. The call counts as failed when anything is lost.
    void ReportUndelivered(const Undelivered& lost) noexcept;

  private:
    const IClock& m_clock;
    const uint32_t m_startTick;
    const uint64_t m_start;  // microseconds
    HANDLE m_mutex = nullptr;
    HandlerCounterBlock* m_block = nullptr;
    HandlerCounterSlot* m_slot = nullptr;
};

// Attaches this process to the counters, as the start of the service does, and sets them to zero unless another process
// counts. A process that cannot attach logs one line at level 'W' and goes on uncounted. Throws OS::CException with
// E_FAIL when the process has no counter manager.
void StartCounters();

// Books what is still kept in the process, unless the mutex is held for more than 50 ms, and detaches.
void StopCounters() noexcept;

}  // namespace wrb
