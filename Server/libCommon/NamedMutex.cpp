#include "NamedMutex.h"

#include "LastError.h"
#include "ServerAccess.h"

namespace wrb {

KernelHandle OpenNamedMutex(const wchar_t* name) noexcept {
    ServerAccess access(OtherAccounts::Nothing);
    if (access.Attributes() != nullptr) {
        if (KernelHandle mutex(CreateMutexW(access.Attributes(), FALSE, name)); mutex) {
            return mutex;
        }
    }
    return KernelHandle(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name));
}

NamedMutexLock::NamedMutexLock(HANDLE mutex, DWORD waitMilliseconds) noexcept : m_mutex(mutex) {
    const DWORD wait = WaitForSingleObject(mutex, waitMilliseconds);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
        m_error = wait == WAIT_TIMEOUT ? ERROR_TIMEOUT : GetLastError();
    }
}

NamedMutexLock::~NamedMutexLock() {
    const KeepLastError keep;
    if (m_error == ERROR_SUCCESS) {
        ReleaseMutex(m_mutex);
    }
}

}  // namespace wrb
