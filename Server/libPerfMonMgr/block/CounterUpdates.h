// The changes that may be made to a counter block, whichever process makes them.
#pragma once

#include <vector>

#include "HandlerCounterBlock.h"

namespace wrb {

// Takes a reference and sets the in-use flag. Needs no mutex.
void AddCounterReference(HandlerCounterBlock& block) noexcept;

// Releases a reference and clears the in-use flag with the last one. The caller holds the block's mutex.
void ReleaseCounterReference(HandlerCounterBlock& block) noexcept;

// Counts a call that begins. Needs no mutex.
void CountCall(HandlerCounterSlot& slot) noexcept;

// Counts a call that has failed. Needs no mutex.
void CountFailure(HandlerCounterSlot& slot) noexcept;

// Counts what could not be handed over. Needs no mutex.
void CountUndelivered(HandlerCounterBlock& block, const Undelivered& lost) noexcept;

// Books calls that ended: the longest and the sum of their times. The caller holds the block's mutex.
void BookTimes(HandlerCounterSlot& slot, uint32_t maximum, uint64_t total) noexcept;

// Counts a call that ended by its run time. Needs no mutex.
void CountTime(HandlerCounterBlock& block, uint32_t slot, uint64_t microseconds) noexcept;

// Writes the next sample. One process at a time.
void AddSample(HandlerCounterBlock& block, const CounterSample& sample) noexcept;

// Sets every counter to zero, forgets the samples and leaves the rest of the header as it is. The caller holds the
// block's mutex.
void ZeroCounters(HandlerCounterBlock& block) noexcept;

// What the slot holds now; each number is read whole.
HandlerCounterSlot ReadCounters(const HandlerCounterSlot& slot) noexcept;
TimeCounts ReadTimes(const TimeCounts& times) noexcept;
int32_t ReadCallsInProgress(const HandlerCounterBlock& block) noexcept;
Undelivered ReadUndelivered(const HandlerCounterBlock& block) noexcept;

// The samples that are there, oldest first. Throws std::bad_alloc only.
std::vector<CounterSample> ReadSamples(const HandlerCounterBlock& block);

}  // namespace wrb
