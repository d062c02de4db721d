#include "CounterSampling.h"

#include <chrono>

#include "CommandTable.h"
#include "CounterSampler.h"

namespace wrb {

void CounterSampling::Start() {
    m_threads.Start(1, [this] { Run(); });
}

void CounterSampling::Run() noexcept {
    constexpr std::chrono::seconds kInterval{10};
    CounterSampler sampler(static_cast<uint32_t>(CommandSlot::kCount));
    std::unique_lock lock(m_lock);
    do {
        sampler.Take();
    } while (!m_changed.wait_for(lock, kInterval, [this] { return m_finishing; }));
}

}  // namespace wrb
