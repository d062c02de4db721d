#include "BackEndWatch.h"

#include <windows.h>

#include <algorithm>
#include <chrono>

#include "ServicePipes.h"

namespace wrb {
namespace {

constexpr std::chrono::seconds kPoll{2};

// A pipe without a free instance is there, too: the system then answers that the time is up.
bool PipeExists(const wchar_t* name) {
    constexpr DWORD kShortestWait = 1;
    return WaitNamedPipeW((L"\\\\.\\pipe\\" + std::wstring(name)).c_str(), kShortestWait) ||
           GetLastError() != ERROR_FILE_NOT_FOUND;
}

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
    if (PipeExists(kDbServerPipe)) {
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
