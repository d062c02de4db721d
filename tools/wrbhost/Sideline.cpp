#include "Sideline.h"

#include <utility>

namespace wrb {

bool Sideline::Put(Job job) noexcept {
    if (m_queued++ < kMostQueued) {
        try {
            m_jobs.Push([this, job = std::move(job)] {
                try {
                    job();
                } catch (...) {
                    // Memory for a line of text, at worst.
                }
                --m_queued;
            });
            return true;
        } catch (...) {
            // No memory: as if the queue were full.
        }
    }
    --m_queued;
    return false;
}

}  // namespace wrb
