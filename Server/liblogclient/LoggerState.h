// The settings of the debug log, shared by all threads that log.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "ExternalLog.h"
#include "LogMirror.h"
#include "SRWLock.h"

namespace wrb {

// Never changed once other threads can see it. A thread keeps its set-up until its line is written; the debug library
// and the mirror file are closed with the last set-up that holds them.
struct LoggerSetup {
    std::wstring moduleTag;
    bool internalLogger = false;
    uint32_t waitMilliseconds = 20;               // how long a line may take to reach the log service
    std::shared_ptr<const ExternalLog> external;  // null with the internal logger
    std::shared_ptr<const LogMirror> mirror;
};

class LoggerState {
  public:
    // The one object of the process. Never destroyed: objects that outlive this module's statics may still log.
    static LoggerState& Shared() noexcept;

    // Null before the first set-up.
    std::shared_ptr<const LoggerSetup> Get() noexcept;

    // Lets `change` alter a copy of the present set-up and makes that the present one. Throws when memory is exhausted;
    // then the present one stays.
    template <typename Change>
    void Replace(Change change) {
        auto next = std::make_shared<LoggerSetup>();
        std::shared_ptr<const LoggerSetup> last;  // released outside the lock: unloading a library runs its code
        const ExclusiveGuard guard(m_lock);
        if (m_setup != nullptr) {
            *next = *m_setup;
        }
        change(*next);
        last = std::exchange(m_setup, std::move(next));
    }

  private:
    CWrbSRWLock m_lock;
    std::shared_ptr<const LoggerSetup> m_setup WRB_GUARDED_BY(m_lock);
};

}  // namespace wrb
