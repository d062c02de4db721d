// The back end's own notes: to the standard error and into the log file, never through the debug log's pipe.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Clock.h"
#include "SRWLock.h"

namespace wrb {

// Limits the notes a minute, so that a peer that sends bad messages cannot flood screen and log. The first note of the
// next minute tells how many were dropped. Any thread.
class Notes {
  public:
    // Called on the thread that writes the note, on several at once, without a lock.
    using Sink = std::function<void(const std::wstring&)>;

    explicit Notes(Sink sink, unsigned perMinute = 120, const IClock& clock = SystemClock());

    void Write(const std::wstring& note);

  private:
    bool Admit(unsigned& heldBack);

    const Sink m_sink;
    const unsigned m_perMinute;
    const IClock& m_clock;
    CWrbSRWLock m_lock;
    uint32_t m_start WRB_GUARDED_BY(m_lock) = 0;  // of the current minute, on the tick clock
    unsigned m_written WRB_GUARDED_BY(m_lock) = 0;
    unsigned m_heldBack WRB_GUARDED_BY(m_lock) = 0;
};

}  // namespace wrb
