#include "Notes.h"

#include <utility>

namespace wrb {
namespace {

constexpr uint32_t kMinuteMilliseconds = 60'000;

}  // namespace

Notes::Notes(Sink sink, unsigned perMinute, const IClock& clock)
    : m_sink(std::move(sink)), m_perMinute(perMinute), m_clock(clock), m_start(clock.TickMilliseconds()) {}

void Notes::Write(const std::wstring& note) {
    const ExclusiveGuard guard(m_lock);
    const uint32_t now = m_clock.TickMilliseconds();
    if (now - m_start >= kMinuteMilliseconds) {
        m_start = now;
        m_written = 0;
        if (const unsigned heldBack = std::exchange(m_heldBack, 0); heldBack != 0) {
            m_sink(std::to_wstring(heldBack) + L" more notes were held back");
        }
    }
    if (m_written == m_perMinute) {
        ++m_heldBack;
        return;
    }
    ++m_written;
    m_sink(note);
}

}  // namespace wrb
