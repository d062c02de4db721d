#include "BackEndWatch.h"

#include <windows.h>

#include <algorithm>
#include <chrono>

#include "ServedPipe.h"
#include "ServicePipes.h"

namespace wrb {
namespace {

constexpr std::chrono::seconds kPoll{2};

}  // namespace

void BackEndWatch::Start() {
    m_threads.Start(1, [this] { Run(); });
}

void BackEndWatch::Run() noexcept {
    std::unique_lock lock(m_lock);
    while (!m_changed.wait_for(lock, kPoll, [this] { return m_finishing; })) {
        lock.unlock();
        try {
            Look();
        } catch (...) {
            // No memory: the next look is in two seconds.
        }
        lock.lock();
    }
}

void BackEndWatch::Look() {
    const uint64_t now = GetTickCount64();
    if (IsServed(kDbServerPipe)) {
        if (m_told) {
            m_listener.found(static_cast<unsigned>((now - m_missingSince) / 1'000));
        }
        m_missingSince = 0;
        m_told = false;
    } else if (m_missingSince == 0) {
        m_missingSince = std::max<uint64_t>(now, 1);
    } else if (!m_told) {
        m_told = true;
        m_listener.lost();
    }
}

}  // namespace wrb
