// Simulated agents that ask a running host for a while: what they ask, at which rate, and how it went.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Latencies.h"
#include "LoadMix.h"
#include "LoadRun.h"

namespace wrb {

struct LoadPlan {
    std::vector<std::wstring> agents;  // uids; at least one. Each of them asks in its turn
    LoadMix mix;                       // not empty
    double seconds = 0;
    double perSecond = 0;  // commands of all agents; 0: each agent asks again as soon as it has its answer
};

// Of one entry of the mix.
struct LoadTally {
    Latencies latencies;                   // of all its commands
    std::atomic<uint64_t> undelivered{0};  // the host did not take the command
    std::atomic<uint64_t> unanswered{0};
    std::atomic<uint64_t> empty{0};  // answers without a character
};

class AgentLoad {
  public:
    static constexpr unsigned kMostAtOnce = 200;

    explicit AgentLoad(LoadPlan plan);  // starts

    bool IsOver() const { return m_run.IsOver(); }
    void Wait() { m_run.Wait(); }

    const LoadMix& Mix() const { return m_plan.mix; }
    const LoadTally& Tally(std::size_t entry) const { return m_tallies[entry]; }

    // So far, of all entries.
    uint64_t Commands() const;
    uint64_t Errors() const;

  private:
    using Clock = std::chrono::steady_clock;

    bool RunOne();
    std::optional<Clock::time_point> AwaitTurn(uint64_t number) const;
    std::size_t PickEntry(uint64_t number) const;

    const LoadPlan m_plan;
    const unsigned m_weights;  // their sum
    const Clock::time_point m_start = Clock::now();
    std::vector<LoadTally> m_tallies;
    std::atomic<uint64_t> m_next{0};
    LoadRun m_run;  // last: its threads use the members above
};

}  // namespace wrb
