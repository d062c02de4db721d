#include "Notes.h"

#include <utility>

namespace wrb {
namespace {

constexpr uint32_t kMinuteMilliseconds = 60'000;

}  // namespace

Notes::Notes(Sink sink, unsigned perMinute, const IClock& clock)
    : m_sink(std::move(sink)), m_perMinute(perMinute), m_clock(clock), m_start(clock.TickMilliseconds()) {}

void Notes::Write(const std::wstring& note) {
    unsigned heldBack = 0;
    const bool admitted = Admit(heldBack);
    if (heldBack != 0) {
        m_sink(std::to_wstring(heldBack) + L" more notes were held back");
    }
    if (admitted) {
        m_sink(note);
    }
}

// `heldBack`: notes of the minute before, to be told now.
bool Notes::Admit(unsigned& heldBack) {
    const ExclusiveGuard guard(m_lock);
    const uint32_t now = m_clock.TickMilliseconds();
    if (now - m_start >= kMinuteMilliseconds) {
        m_start = now;
        m_written = 0;
        heldBack = std::exchange(m_heldBack, 0);
    }
    const bool admitted = m_written < m_perMinute;
    ++(admitted ? m_written : m_heldBack);
    return admitted;
}

}  // namespace wrb
