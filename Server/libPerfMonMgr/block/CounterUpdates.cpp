#include "CounterUpdates.h"

#include <algorithm>
#include <atomic>

namespace wrb {
namespace {

// The memory is shared with other processes, which see every store: no number may ever be half written.
static_assert(std::atomic_ref<uint32_t>::is_always_lock_free && std::atomic_ref<uint64_t>::is_always_lock_free);

template <typename Number>
Number Load(const Number& number) noexcept {
    return std::atomic_ref<Number>(const_cast<Number&>(number)).load(std::memory_order_relaxed);
}

template <typename Number>
void Store(Number& number, Number value) noexcept {
    std::atomic_ref<Number>(number).store(value, std::memory_order_relaxed);
}

}  // namespace

void AddCounterReference(HandlerCounterBlock& block) noexcept {
    std::atomic_ref<int32_t>(block.referenceCount).fetch_add(1);
    std::atomic_ref<int32_t>(block.inUse).store(1);
}

void ReleaseCounterReference(HandlerCounterBlock& block) noexcept {
    std::atomic_ref<int32_t> count(block.referenceCount);
    std::atomic_ref<int32_t> inUse(block.inUse);
    if (count.fetch_sub(1) != 1) {
        return;
    }
    inUse.store(0);
    // A reference taken between the last two steps has set the flag before it was cleared.
    if (count.load() > 0) {
        inUse.store(1);
    }
}

void CountCall(HandlerCounterSlot& slot) noexcept {
    std::atomic_ref<uint32_t>(slot.calls).fetch_add(1);
}

void CountFailure(HandlerCounterSlot& slot) noexcept {
    std::atomic_ref<uint32_t>(slot.failures).fetch_add(1);
}

void CountUndelivered(HandlerCounterBlock& block, const Undelivered& lost) noexcept {
    std::atomic_ref<uint32_t>(block.undeliveredRows).fetch_add(lost.rows);
    std::atomic_ref<uint32_t>(block.undeliveredEvents).fetch_add(lost.events);
}

void BookTimes(HandlerCounterSlot& slot, uint32_t maximum, uint64_t total) noexcept {
    const uint64_t sum = slot.total + total;
    const uint32_t calls = Load(slot.calls);
    Store(slot.maximum, std::max(slot.maximum, maximum));
    Store(slot.total, sum);
    if (calls != 0) {
        Store(slot.average, static_cast<uint32_t>(sum / calls));
    }
}

void CountTime(HandlerCounterBlock& block, uint32_t slot, uint64_t microseconds) noexcept {
    std::atomic_ref<uint32_t>(block.times[slot][TimeBucketOf(microseconds)]).fetch_add(1, std::memory_order_relaxed);
}

void AddSample(HandlerCounterBlock& block, const CounterSample& sample) noexcept {
    const uint64_t taken = Load(block.samplesTaken);
    block.samples[taken % kCounterSamples] = sample;
    std::atomic_ref<uint64_t>(block.samplesTaken).store(taken + 1, std::memory_order_release);
}

void ZeroCounters(HandlerCounterBlock& block) noexcept {
    for (HandlerCounterSlot& slot : block.slots) {
        Store(slot.calls, uint32_t{0});
        Store(slot.maximum, uint32_t{0});
        Store(slot.total, uint64_t{0});
        Store(slot.average, uint32_t{0});
        Store(slot.failures, uint32_t{0});
    }
    Store(block.undeliveredRows, uint32_t{0});
    Store(block.undeliveredEvents, uint32_t{0});
    Store(block.samplesTaken, uint64_t{0});
    for (TimeCounts& times : block.times) {
        std::ranges::for_each(times, [](uint32_t& count) { Store(count, uint32_t{0}); });
    }
}

HandlerCounterSlot ReadCounters(const HandlerCounterSlot& slot) noexcept {
    return {Load(slot.calls), Load(slot.maximum), Load(slot.total), Load(slot.average), Load(slot.failures)};
}

TimeCounts ReadTimes(const TimeCounts& times) noexcept {
    TimeCounts counts;
    std::ranges::transform(times, counts.begin(), Load<uint32_t>);
    return counts;
}

int32_t ReadCallsInProgress(const HandlerCounterBlock& block) noexcept {
    return Load(block.referenceCount);
}

Undelivered ReadUndelivered(const HandlerCounterBlock& block) noexcept {
    return {Load(block.undeliveredRows), Load(block.undeliveredEvents)};
}

// The writer may be at the place of the oldest one: it is left out, and so are those that are overwritten meanwhile.
std::vector<CounterSample> ReadSamples(const HandlerCounterBlock& block) {
    const auto taken = [&] {
        return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(block.samplesTaken)).load(std::memory_order_acquire);
    };
    const auto firstWhole = [](uint64_t count) { return count < kCounterSamples ? 0 : count - kCounterSamples + 1; };
    const uint64_t end = taken();
    const uint64_t begin = firstWhole(end);
    std::vector<CounterSample> samples;
    for (uint64_t number = begin; number < end; ++number) {
        samples.push_back(block.samples[number % kCounterSamples]);
    }
    const uint64_t now = taken();
    const uint64_t lost = now < end ? samples.size() : std::min<uint64_t>(firstWhole(now) - begin, samples.size());
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(lost));
    return samples;
}

}  // namespace wrb
