#include "ReplayRun.h"

#include <chrono>
#include <cwchar>
#include <functional>

#include "Bytes.h"
#include "Conversation.h"
#include "Polling.h"
#include "RecordingFile.h"
#include "ServicePipes.h"

namespace wrb {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint64_t kEndMilliseconds = 10'000;

// The same agent has the same thread.
unsigned ThreadOf(const CommandMessage& parts, unsigned threads) {
    return static_cast<unsigned>(std::hash<std::wstring_view>()(parts.uid) % threads);
}

// The record's text may be cut.
bool IsTextOf(const wchar_t* traced, std::size_t room, std::wstring_view text) {
    return std::wstring_view(traced, wcsnlen(traced, room)) == text.substr(0, room - 1);
}

}  // namespace

ReplayRun::ReplayRun(std::vector<ReplayItem> items, const ReplayOptions& options, Report report)
    : m_items(std::move(items)), m_options(options), m_report(std::move(report)), m_start(Clock::now()) {
    if (options.awaitsEnds) {
        m_trace.Open(kTraceSection);  // without it nothing is waited for
    }
    m_shares.resize(options.threads);
    for (const ReplayItem& item : m_items) {
        const std::wstring message = WideTextOf(item.record.message);
        m_shares[ThreadOf(ReadCommandMessage(message), options.threads)].push_back(&item);
    }
    for (const Share& share : m_shares) {
        m_threads.emplace_back([this, &share] { Work(share); });
    }
}

void ReplayRun::Work(const Share& items) {
    for (const ReplayItem* const item : items) {
        const std::wstring message = WideTextOf(item->record.message);
        const CommandMessage parts = ReadCommandMessage(message);
        std::this_thread::sleep_until(m_start + std::chrono::microseconds(item->dueMicroseconds));
        m_report(*item, parts, Send(*item, parts));
    }
}

Replayed ReplayRun::Send(const ReplayItem& item, const CommandMessage& parts) {
    Replayed replayed;
    const auto start = Clock::now();
    if ((item.record.command.flags & kRecordedAnswered) != 0) {
        const std::wstring replyPipe = NewReplyPipe();
        Answer answer = Exchange(WithReplyPipe(parts, replyPipe), replyPipe);
        replayed.isDelivered = answer.delivered;
        replayed.isAnswered = answer.answered;
        replayed.answer = std::move(answer.text);
    } else {
        const uint64_t next = m_trace ? m_trace->Look() : 0;
        replayed.isDelivered = Deliver(kHostPipe, item.record.message.data(), item.record.message.size());
        if (m_trace && replayed.isDelivered && (item.record.command.flags & (kRecordedRefused | kRecordedThrew)) == 0) {
            AwaitEnd(next, parts);
        }
    }
    replayed.microseconds =
        static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count());
    return replayed;
}

// `next`: the trace's next record before the command was sent.
void ReplayRun::AwaitEnd(uint64_t next, const CommandMessage& parts) {
    const uint64_t deadline = GetTickCount64() + kEndMilliseconds;
    TracedCommand traced;
    const auto hasEnded = [&] {
        for (const uint64_t end = m_trace->Look(); next < end && GetTickCount64() < deadline; ++next) {
            if (m_trace->Read(next, traced) && IsTextOf(traced.command, std::size(traced.command), parts.name) &&
                IsTextOf(traced.uid, std::size(traced.uid), parts.uid)) {
                return true;
            }
        }
        return false;
    };
    PollUntil(hasEnded, kEndMilliseconds, 1);
}

}  // namespace wrb
