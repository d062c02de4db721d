// What the back end has to say of itself: to the standard error and into the log, never through the debug log's pipe.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "Clock.h"

namespace wrb {

// Lets so many notes a minute through, so that a peer that sends nothing but rubbish cannot flood screen and log; what
// was held back is said with the first note of the next minute. Any thread.
class CNotes {
  public:
    using Sink = std::function<void(const std::wstring&)>;

    explicit CNotes(Sink sink, unsigned perMinute = 120, const IClock& clock = SystemClock());

    void Write(const std::wstring& note);

  private:
    const Sink m_sink;
    const unsigned m_perMinute;
    const IClock& m_clock;
    std::mutex m_lock;
    uint32_t m_start = 0;  // of the current minute, on the tick clock
    unsigned m_written = 0;
    unsigned m_heldBack = 0;
};

}  // namespace wrb
