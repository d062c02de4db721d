#include "CounterScope.h"

#include "CounterUpdates.h"
#include "DebugLog.h"
#include "NamedMutex.h"
#include "OSException.h"
#include "PerfMonMgr.h"

namespace wrb {
namespace {

CWrbyPerfMonMgr& Manager() {
    CWrbyPerfMonMgr* manager = CWrbyPerfMonMgr::GetInstance();
    if (manager == nullptr) {
        OS::ThrowHResult(E_FAIL, "no performance counter manager");
    }
    return *manager;
}

}  // namespace

CounterCall::CounterCall(uint32_t slot, const IClock& clock) : m_clock(clock), m_startTick(clock.TickMilliseconds()) {
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
    if (const NamedMutexLock lock(m_mutex, INFINITE); lock) {
        BookCallTime(*m_slot, elapsed);
        ReleaseCounterReference(*m_block);
    }
}

void CounterCall::ReportResult(bool succeeded) noexcept {
    if (!succeeded && m_slot != nullptr) {
        CountFailure(*m_slot);
    }
}

void StartCounters() {
    if (!CWrbyPerfMonMgr::Initialize()) {
        WRB_LOG(kLogWarning, L"%s - The call counters cannot be attached, calls go uncounted. err=%d",
                L"cmdhl_Initialize", GetLastError());
    }
    Manager();
}

}  // namespace wrb
