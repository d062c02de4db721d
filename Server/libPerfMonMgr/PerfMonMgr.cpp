#include "PerfMonMgr.h"

#include <atomic>

#include "CounterSection.h"
#include "CounterUpdates.h"
#include "SRWLock.h"

namespace {

struct ManagerState {
    CWrbSRWLock lock;  // one attach or detach at a time
    wrb::CounterSection section WRB_GUARDED_BY(lock);
    // What every call reads, without the lock.
    std::atomic<HandlerCounterBlock*> block{nullptr};
    std::atomic<HANDLE> mutex{nullptr};
    std::atomic<CWrbyPerfMonMgr*> instance{nullptr};
};

ManagerState& State() {
    static ManagerState state;
    return state;
}

}  // namespace

CWrbyPerfMonMgr* CWrbyPerfMonMgr::GetInstance() noexcept {
    return State().instance.load(std::memory_order_acquire);
}

bool CWrbyPerfMonMgr::Initialize() noexcept {
    static CWrbyPerfMonMgr manager;
    ManagerState& state = State();
    wrb::ExclusiveGuard guard(state.lock);
    state.instance.store(&manager, std::memory_order_release);
    uint32_t error = ERROR_SUCCESS;
    const wrb::CounterAttach result = state.section.Open({}, error);
    if (result != wrb::CounterAttach::Attached) {
        SetLastError(result == wrb::CounterAttach::Foreign ? ERROR_REVISION_MISMATCH : error);
        return false;
    }
    state.mutex.store(state.section.Mutex(), std::memory_order_release);
    state.block.store(state.section.Block(), std::memory_order_release);
    return true;
}

void CWrbyPerfMonMgr::UnInitialize() noexcept {
    ManagerState& state = State();
    wrb::ExclusiveGuard guard(state.lock);
    state.block.store(nullptr, std::memory_order_release);
    state.mutex.store(nullptr, std::memory_order_release);
    state.section.Close();
}

void CWrbyPerfMonMgr::CloseSingleton() noexcept {
    if (CWrbyPerfMonMgr* manager = State().instance.exchange(nullptr)) {
        manager->UnInitialize();
    }
}

HandlerCounterBlock* CWrbyPerfMonMgr::GetCounterInstance(uint32_t instance) noexcept {
    HandlerCounterBlock* block = State().block.load(std::memory_order_acquire);
    if (instance != kHandlerInstance || block == nullptr) {
        return nullptr;
    }
    wrb::AddCounterReference(*block);
    return block;
}

HANDLE CWrbyPerfMonMgr::GetMutex() const noexcept {
    return State().mutex.load(std::memory_order_acquire);
}
