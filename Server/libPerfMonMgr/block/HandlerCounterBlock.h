// The shared performance counters of the command handlers, in named shared memory. Any local process may
// map the section and read; the server's processes write.
//
// The layout is fixed: little-endian, natural alignment, no pointers, the same for 32-bit and 64-bit readers. A change
// takes a new version number. Times are milliseconds of the system's tick counter.
#pragma once

#include <cstddef>
#include <cstdint>

#include "TimeHistogram.h"

namespace wrb {

inline constexpr uint32_t kCounterSignature = 0x43425257;  // the bytes "WRBC" in memory
inline constexpr uint32_t kCounterVersion = 2;
inline constexpr uint32_t kCounterSlots = 128;
inline constexpr uint32_t kCounterSamples = 360;  // of the last hour

// The section that holds the block, the mutex that guards it, and the event that every process that counts holds open.
inline constexpr wchar_t kCounterSectionName[] = L"Global\\Calloway_Warrenby_Handler_Counters";
inline constexpr wchar_t kCounterMutexName[] = L"Global\\Calloway_Warrenby_Handler_Counters_Mutex";
inline constexpr wchar_t kCounterHolderName[] = L"Global\\Calloway_Warrenby_Handler_Counters_Holder";

// What commands have acknowledged, or do not acknowledge at all, and could not hand over to a service.
struct Undelivered {
    uint32_t rows = 0;    // for the log pool or for the feedback log
    uint32_t events = 0;  // for the central-management agent and the agent-command service
};

// What all commands together did in one interval, about ten seconds.
struct CounterSample {
    int64_t second;         // of its end: seconds since 1970-01-01 00:00 UTC
    uint32_t milliseconds;  // its length
    uint32_t calls;         // that began
    uint32_t failures;
    uint32_t p50;  // percentiles of the run times of the calls that ended, in microseconds; 0 without calls
    uint32_t p95;
    uint32_t p99;
};
static_assert(sizeof(CounterSample) == 32);

}  // namespace wrb

// One command; its slot is its row in the command table. `calls` is raised without the mutex when a call begins,
// `failures` when its work has failed, the rest is changed under the mutex when it ends. A reader without the mutex
// sees each number whole, but may see a call that is counted and not yet timed.
struct HandlerCounterSlot {
    uint32_t calls;
    uint32_t maximum;   // longest call
    uint64_t total;     // of all calls that ended
    uint32_t average;   // total / calls when the last call ended
    uint32_t failures;  // calls of a command without an answer that failed, and reports of agents not handed over whole
};

struct HandlerCounterBlock {
    uint32_t signature;        // kCounterSignature
    uint32_t version;          // kCounterVersion
    uint32_t size;             // of the whole block in bytes
    uint32_t slotCount;        // kCounterSlots
    int32_t referenceCount;    // calls in progress, over all processes; one that was killed leaves its calls behind
    int32_t inUse;             // 1 while referenceCount is not 0
    uint32_t undeliveredRows;  // wrb::Undelivered, changed without the mutex; always 0 before these counters existed
    uint32_t undeliveredEvents;
    HandlerCounterSlot slots[wrb::kCounterSlots];
    uint32_t bucketCount;   // wrb::kTimeBuckets
    uint32_t sampleCount;   // wrb::kCounterSamples
    uint64_t samplesTaken;  // since the counters were zero
    wrb::TimeCounts
        times[wrb::kCounterSlots];  // of each slot's calls that ended, by run time; changed without the mutex
    wrb::CounterSample samples[wrb::kCounterSamples];  // number n is at n % sampleCount; the host writes them
};

static_assert(offsetof(HandlerCounterSlot, calls) == 0);
static_assert(offsetof(HandlerCounterSlot, maximum) == 4);
static_assert(offsetof(HandlerCounterSlot, total) == 8);
static_assert(offsetof(HandlerCounterSlot, average) == 16);
static_assert(offsetof(HandlerCounterSlot, failures) == 20);
static_assert(sizeof(HandlerCounterSlot) == 24);
static_assert(offsetof(HandlerCounterBlock, signature) == 0);
static_assert(offsetof(HandlerCounterBlock, version) == 4);
static_assert(offsetof(HandlerCounterBlock, size) == 8);
static_assert(offsetof(HandlerCounterBlock, slotCount) == 12);
static_assert(offsetof(HandlerCounterBlock, referenceCount) == 16);
static_assert(offsetof(HandlerCounterBlock, inUse) == 20);
static_assert(offsetof(HandlerCounterBlock, undeliveredRows) == 24);
static_assert(offsetof(HandlerCounterBlock, undeliveredEvents) == 28);
static_assert(offsetof(HandlerCounterBlock, slots) == 32);
static_assert(offsetof(HandlerCounterBlock, bucketCount) == 32 + 24 * 128);
static_assert(offsetof(HandlerCounterBlock, sampleCount) == 3108);
static_assert(offsetof(HandlerCounterBlock, samplesTaken) == 3112);
static_assert(offsetof(HandlerCounterBlock, times) == 3120);
static_assert(offsetof(HandlerCounterBlock, samples) == 3120 + 4 * 464 * 128);
static_assert(sizeof(HandlerCounterBlock) == 240'688 + 32 * 360);
