// The one reader-writer lock of the project and its two scoped guards.
//
// Not recursive: a thread that holds the lock in either mode must not take it again.
#pragma once

#include <windows.h>

#include "Compiler.h"

class WRB_CAPABILITY("rwlock") CWrbSRWLock {
  public:
    CWrbSRWLock() = default;
    CWrbSRWLock(const CWrbSRWLock&) = delete;
    CWrbSRWLock& operator=(const CWrbSRWLock&) = delete;

    void LockExclusive() noexcept WRB_ACQUIRE() { AcquireSRWLockExclusive(&m_lock); }
    void UnlockExclusive() noexcept WRB_RELEASE() { ReleaseSRWLockExclusive(&m_lock); }
    void LockShared() noexcept WRB_ACQUIRE_SHARED() { AcquireSRWLockShared(&m_lock); }
    void UnlockShared() noexcept WRB_RELEASE_SHARED() { ReleaseSRWLockShared(&m_lock); }

  private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};

namespace wrb {

class WRB_SCOPED_CAPABILITY ExclusiveGuard {
  public:
    explicit ExclusiveGuard(CWrbSRWLock& lock) noexcept WRB_ACQUIRE(lock) : m_lock(lock) { m_lock.LockExclusive(); }
    ~ExclusiveGuard() WRB_RELEASE() { m_lock.UnlockExclusive(); }
    ExclusiveGuard(const ExclusiveGuard&) = delete;
    ExclusiveGuard& operator=(const ExclusiveGuard&) = delete;

  private:
    CWrbSRWLock& m_lock;
};

class WRB_SCOPED_CAPABILITY SharedGuard {
  public:
    explicit SharedGuard(CWrbSRWLock& lock) noexcept WRB_ACQUIRE_SHARED(lock) : m_lock(lock) { m_lock.LockShared(); }
    ~SharedGuard() WRB_RELEASE_GENERIC() { m_lock.UnlockShared(); }
    SharedGuard(const SharedGuard&) = delete;
    SharedGuard& operator=(const SharedGuard&) = delete;

  private:
    CWrbSRWLock& m_lock;
};

}  // namespace wrb
