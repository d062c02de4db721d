#include "Suspension.h"

// tlhelp32.h needs windows.h before it.
#include <tlhelp32.h>

namespace wrb::soak {

// A thread that still runs may start another one, so the list is read until it has nothing new.
Suspension::Suspension(DWORD process) {
    while (SuspendNewThreads(process)) {
    }
}

Suspension::~Suspension() {
    for (const auto& [id, thread] : m_threads) {
        ResumeThread(thread.Get());
    }
}

bool Suspension::SuspendNewThreads(DWORD process) {
    const FileHandle list(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    bool found = false;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(list.Get(), &entry); more; more = Thread32Next(list.Get(), &entry)) {
        if (entry.th32OwnerProcessID != process || m_threads.contains(entry.th32ThreadID)) {
            continue;
        }
        KernelHandle thread(OpenThread(THREAD_SUSPEND_RESUME, FALSE, entry.th32ThreadID));
        if (thread && SuspendThread(thread.Get()) != static_cast<DWORD>(-1)) {
            m_threads.emplace(entry.th32ThreadID, std::move(thread));
            found = true;
        }
    }
    return found;
}

}  // namespace wrb::soak
