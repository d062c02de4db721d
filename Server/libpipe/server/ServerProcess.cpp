#include "ServerProcess.h"

#include <new>

#include "SRWLock.h"

namespace wrb {
namespace {

struct LastProcess {
    CWrbSRWLock lock;
    DWORD id WRB_GUARDED_BY(lock) = 0;
    ProcessHandle process WRB_GUARDED_BY(lock);
};

LastProcess lastProcess;

ProcessHandle Open(DWORD id) noexcept {
    KernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
    try {
        return process ? std::make_shared<const KernelHandle>(std::move(process)) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

ProcessHandle ServerProcess(DWORD id) noexcept {
    if (id == 0) {
        return nullptr;
    }
    {
        const SharedGuard guard(lastProcess.lock);
        if (lastProcess.id == id && lastProcess.process != nullptr) {
            return lastProcess.process;
        }
    }
    ProcessHandle process = Open(id);
    const ExclusiveGuard guard(lastProcess.lock);
    lastProcess.id = id;
    lastProcess.process = process;
    return process;
}

}  // namespace wrb
