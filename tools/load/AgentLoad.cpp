#include "AgentLoad.h"

#include <algorithm>
#include <numeric>
#include <thread>
#include <utility>

#include "Conversation.h"

namespace wrb {
namespace {

unsigned SumOfWeights(const LoadMix& mix) {
    return std::accumulate(mix.begin(), mix.end(), 0u,
                           [](unsigned sum, const MixEntry& entry) { return sum + entry.weight; });
}

void Exchange(const MixEntry& entry, const std::wstring& uid, LoadTally& tally) {
    CommandTally ignored;
    std::vector<std::wstring> fields = entry.fields;
    std::ranges::replace(fields, kMixUid, uid);
    if (!entry.answers) {
        tally.undelivered += Tell(ignored, entry.command, fields) ? 0 : 1;
        return;
    }
    const Answer answer = Ask(ignored, entry.command, fields);
    tally.undelivered += answer.delivered ? 0 : 1;
    tally.unanswered += answer.delivered && !answer.answered ? 1 : 0;
    tally.empty += answer.answered && answer.text.empty() ? 1 : 0;
}

}  // namespace

AgentLoad::AgentLoad(LoadPlan plan)
    : m_plan(std::move(plan)),
      m_weights(SumOfWeights(m_plan.mix)),
      m_tallies(m_plan.mix.size()),
      m_run(static_cast<unsigned>(std::min<std::size_t>(m_plan.agents.size(), kMostAtOnce)), LoadRun::kAnyNumber,
            [this](unsigned) { return RunOne(); }) {}

uint64_t AgentLoad::Commands() const {
    return std::accumulate(m_tallies.begin(), m_tallies.end(), uint64_t{0},
                           [](uint64_t sum, const LoadTally& tally) { return sum + tally.latencies.Count(); });
}

uint64_t AgentLoad::Errors() const {
    return std::accumulate(m_tallies.begin(), m_tallies.end(), uint64_t{0}, [](uint64_t sum, const LoadTally& tally) {
        return sum + tally.undelivered + tally.unanswered;
    });
}

// When the command of that number begins; nothing when the time is over.
std::optional<AgentLoad::Clock::time_point> AgentLoad::AwaitTurn(uint64_t number) const {
    const auto end = m_start + std::chrono::duration<double>(m_plan.seconds);
    if (m_plan.perSecond <= 0) {
        const auto now = Clock::now();
        return now < end ? std::optional(now) : std::nullopt;
    }
    const auto due = m_start + std::chrono::duration_cast<Clock::duration>(
                                   std::chrono::duration<double>(static_cast<double>(number) / m_plan.perSecond));
    if (due >= end) {
        return std::nullopt;
    }
    std::this_thread::sleep_until(due);
    return due;
}

// The same sequence each time, in which the entries are well mixed.
std::size_t AgentLoad::PickEntry(uint64_t number) const {
    constexpr uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;  // times 2^64
    auto at = static_cast<unsigned>(((number * kGoldenRatio) >> 32) * m_weights >> 32);
    std::size_t entry = 0;
    for (; at >= m_plan.mix[entry].weight; ++entry) {
        at -= m_plan.mix[entry].weight;
    }
    return entry;
}

// A time is counted from the moment at which the command was due: that all agents were busy does not hide a slow
// server.
bool AgentLoad::RunOne() {
    const uint64_t number = m_next++;
    const auto begin = AwaitTurn(number);
    if (!begin) {
        return false;
    }
    const std::size_t entry = PickEntry(number);
    Exchange(m_plan.mix[entry], m_plan.agents[number % m_plan.agents.size()], m_tallies[entry]);
    const std::chrono::duration<double, std::micro> elapsed = Clock::now() - *begin;
    m_tallies[entry].latencies.Add(static_cast<uint64_t>(elapsed.count()));
    return true;
}

}  // namespace wrb
