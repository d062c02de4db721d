// Sends the commands of a recording again.
//
// The commands of one agent follow one another on one thread; those of different agents overlap. A command is sent when
// its time has come and the one before it on its thread has been answered.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "CommandMessage.h"
#include "CommandTrace.h"
#include "RecordingFormat.h"
#include "SharedBlock.h"

namespace wrb {

// A command of the recording that is to be sent.
struct ReplayItem {
    uint64_t number = 0;          // in the recording, from 1
    int64_t dueMicroseconds = 0;  // since the start of the replay
    RecordView record;
};

struct Replayed {
    bool isDelivered = false;  // the host has read the message
    bool isAnswered = false;   // always false for a command that was not answered when it was recorded
    std::wstring answer;
    uint64_t microseconds = 0;  // until the answer was there
};

struct ReplayOptions {
    unsigned threads = 8;

    // After a command without an answer the next one waits until the host's trace shows its end, at most ten seconds:
    // what an agent stores and then reads is what it has stored.
    bool awaitsEnds = false;
};

class ReplayRun {
  public:
    // Any thread, several at once. `parts` are of the recorded message.
    using Report = std::function<void(const ReplayItem& item, const CommandMessage& parts, const Replayed& replayed)>;

    // Starts. The records must outlive the object.
    ReplayRun(std::vector<ReplayItem> items, const ReplayOptions& options, Report report);
    ~ReplayRun() = default;  // waits until all are sent
    ReplayRun(const ReplayRun&) = delete;
    ReplayRun& operator=(const ReplayRun&) = delete;

  private:
    using Share = std::vector<const ReplayItem*>;

    void Work(const Share& items);
    Replayed Send(const ReplayItem& item, const CommandMessage& parts);
    void AwaitEnd(uint64_t next, const CommandMessage& parts);

    const std::vector<ReplayItem> m_items;
    const ReplayOptions m_options;
    const Report m_report;
    const std::chrono::steady_clock::time_point m_start;
    SharedBlock<TraceFeed> m_trace;
    std::vector<Share> m_shares;          // of the threads
    std::vector<std::jthread> m_threads;  // last: they use the members above
};

}  // namespace wrb
