#include "CounterScope.h"

#include "CounterUpdates.h"
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

class MutexOwnership {
  public:
    explicit MutexOwnership(HANDLE mutex) noexcept : m_mutex(mutex) {
        const DWORD wait = WaitForSingleObject(mutex, INFINITE);
        // Abandoned: its owner died between two counters. They are only figures; the next call goes on from them.
        m_owned = wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED;
    }
    ~MutexOwnership() {
        if (m_owned) {
            ReleaseMutex(m_mutex);
        }
    }
    MutexOwnership(const MutexOwnership&) = delete;
    MutexOwnership& operator=(const MutexOwnership&) = delete;

    explicit operator bool() const noexcept { return m_owned; }

  private:
    HANDLE m_mutex;
    bool m_owned = false;
};

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
    if (const MutexOwnership owned(m_mutex); owned) {
        BookCallTime(*m_slot, elapsed);
        ReleaseCounterReference(*m_block);
    }
}

void CounterCall::ReportResult(bool succeeded) noexcept {
    if (!succeeded && m_slot != nullptr) {
        CountFailure(*m_slot);
    }
}

void ResetAllCounters() {
    CWrbyPerfMonMgr& manager = Manager();
    HandlerCounterBlock* block = manager.GetCounterInstance(CWrbyPerfMonMgr::kHandlerInstance);
    if (block == nullptr) {
        return;
    }
    // Under the mutex, so that a call that another process is just booking is not half kept; without it a start from
    // zero still matters more than that call.
    const MutexOwnership owned(manager.GetMutex());
    ZeroCounters(*block);
    if (owned) {
        ReleaseCounterReference(*block);
    }
}

}  // namespace wrb
