#include "WorkerThreads.h"

namespace wrb {

void WorkerThreads::Finish(std::mutex& lock, bool& finishing, std::condition_variable& changed) {
    {
        const std::lock_guard guard(lock);
        finishing = true;
    }
    changed.notify_all();
    m_threads.clear();  // joins
}

}  // namespace wrb
