#include "CounterScope.h"

#include "CallFacts.h"
#include "CounterUpdates.h"
#include "DebugLog.h"
#include "NamedMutex.h"
#include "OSException.h"
#include "PerfMonMgr.h"
#include "SystemText.h"
#include "UnbookedCalls.h"

namespace wrb {
namespace {

constexpr DWORD kMutexWaitMilliseconds = 50;

UnbookedCalls unbookedCalls;

CWrbyPerfMonMgr& Manager() {
    CWrbyPerfMonMgr* manager = CWrbyPerfMonMgr::GetInstance();
    if (manager == nullptr) {
        OS::ThrowHResult(E_FAIL, "no performance counter manager");
    }
    return *manager;
}

}  // namespace

CounterCall::CounterCall(uint32_t slot, const IClock& clock)
    : m_clock(clock), m_startTick(clock.TickMilliseconds()), m_start(clock.MonotonicMicroseconds()) {
    CWrbyPerfMonMgr& manager = Manager();
    if (slot >= kCounterSlots) {
        return;
    }
    m_block = manager.GetCounterInstance(CWrbyPerfMonMgr::kHandlerInstance);
    if (m_block != nullptr) {
        m_mutex = manager.GetMutex();
        m_slot = &m_block->slots[slot];
        CountCall(*m_slot);
    }
}

CounterCall::~CounterCall() {
    if (m_block == nullptr) {
        return;
    }
    const uint32_t elapsed = m_clock.TickMilliseconds() - m_startTick;
    const auto slot = static_cast<uint32_t>(m_slot - m_block->slots);
    CountTime(*m_block, slot, m_clock.MonotonicMicroseconds() - m_start);
    // While somebody holds the mutex, only the first call waits for it.
    const NamedMutexLock lock(m_mutex, unbookedCalls.Any() ? 0 : kMutexWaitMilliseconds);
    if (!lock) {
        unbookedCalls.Keep(slot, elapsed);
        return;
    }
    BookTimes(*m_slot, elapsed, elapsed);
    ReleaseCounterReference(*m_block);
    if (unbookedCalls.Any()) {
        unbookedCalls.Book(*m_block);
    }
}

void CounterCall::ReportResult(bool succeeded) noexcept {
    if (!succeeded && m_slot != nullptr) {
        CountFailure(*m_slot);
    }
    if (CallFacts* const facts = CurrentCallFacts()) {
        facts->hasFailed |= !succeeded;
    }
}

void CounterCall::ReportUndelivered(const Undelivered& lost) noexcept {
    ReportResult(lost.rows == 0 && lost.events == 0);
    if (m_block != nullptr) {
        CountUndelivered(*m_block, lost);
    }
}

void StartCounters() {
    if (!CWrbyPerfMonMgr::Initialize()) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogWarning, L"%s - The call counters cannot be attached, calls go uncounted: %s", L"cmdhl_Initialize",
                WideSystemText(error).c_str());
    }
    Manager();
}

void StopCounters() noexcept {
    CWrbyPerfMonMgr* const manager = CWrbyPerfMonMgr::GetInstance();
    if (manager == nullptr) {
        return;
    }
    if (unbookedCalls.Any()) {
        const NamedMutexLock lock(manager->GetMutex(), kMutexWaitMilliseconds);
        HandlerCounterBlock* const block =
            lock ? manager->GetCounterInstance(CWrbyPerfMonMgr::kHandlerInstance) : nullptr;
        if (block != nullptr) {
            unbookedCalls.Book(*block);
            ReleaseCounterReference(*block);
        }
    }
    CWrbyPerfMonMgr::CloseSingleton();
}

}  // namespace wrb
