#include "JobLimit.h"

#include <memory>
#include <utility>

namespace wrb {

Job JobLimit::Admit(Job work) {
    const std::shared_ptr<std::atomic<unsigned>> place(&m_taken, [](std::atomic<unsigned>* taken) { --*taken; });
    if (++m_taken > m_most) {
        return {};
    }
    return [place, work = std::move(work)] { work(); };
}

}  // namespace wrb
