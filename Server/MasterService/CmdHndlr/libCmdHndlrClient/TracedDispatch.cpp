#include "TracedDispatch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cwchar>
#include <span>
#include <string_view>

#include "Bytes.h"
#include "CallFacts.h"
#include "Clock.h"
#include "CmdProtocol.h"
#include "RecordingFeed.h"

namespace wrb {
namespace {

std::atomic<TraceFeed*> g_feed{nullptr};

constexpr struct {
    std::wstring_view name;
    std::string_view fields;
} kFields[] = {
#define WRB_COMMAND(name, handler, role, fields, failure, lane) {L"" #name, fields},
#include "CommandTable.inc"
};

template <std::size_t size>
void Copy(std::wstring_view text, wchar_t (&to)[size]) noexcept {
    to[text.copy(to, size - 1)] = L'\0';
}

void FillNames(const wchar_t* message, uint64_t bytes, TracedCommand& record) {
    CCmdProtocol fields(message, static_cast<int32_t>(static_cast<uint32_t>(bytes)));
    std::wstring name;
    std::wstring uid;
    fields >> name >> uid;
    Copy(name, record.command);
    const auto* const row = std::ranges::find_if(kFields, [&](const auto& entry) { return entry.name == name; });
    const std::string_view layout = row != std::end(kFields) ? row->fields : std::string_view();
    if (layout.starts_with("reply pipe, uid")) {
        fields >> uid;
    } else if (!layout.starts_with("uid")) {
        uid.clear();
    }
    Copy(uid, record.uid);
}

// As the library reads it: see cmdhl_Process.
std::span<const uint8_t> MessageBytes(const wchar_t* message, uint64_t bytes) noexcept {
    const auto size = static_cast<int32_t>(static_cast<uint32_t>(bytes));
    const std::size_t characters = message == nullptr ? 0
                                   : size == -1       ? std::wcslen(message)
                                                      : static_cast<std::size_t>(std::max(size, 0)) / sizeof(wchar_t);
    return {reinterpret_cast<const uint8_t*>(message), characters * sizeof(wchar_t)};
}

// One command that is traced or recorded, from its start.
class TracedCall {
  public:
    TracedCall(const wchar_t* message, uint64_t bytes, bool isRecorded) : m_message(message), m_bytes(bytes) {
        m_facts.mostAnswer = isRecorded ? RecordingFeed::kQueueBytes : 0;
    }

    // The command has ended.
    void Trace(TraceFeed& feed) const {
        TracedCommand record{};
        record.microseconds = Elapsed();
        record.endMilliseconds = RecordingTime() / 1000;
        record.answerBytes = m_facts.answerBytes;
        record.requests = m_facts.requests;
        record.hasFailed = m_facts.hasFailed ? 1 : 0;
        FillNames(m_message, m_bytes, record);
        feed.Write(record);
    }
    void Record(RecordingFeed& feed, uint32_t flags) const noexcept {
        if (m_facts.isAnswerCut) {
            feed.CountMissed();
            return;
        }
        RecordedCommand record;
        record.runMicroseconds = Elapsed();
        record.beginMicroseconds = m_begin;
        record.flags =
            flags | (m_facts.hasFailed ? kRecordedFailed : 0) | (m_facts.hasAnswered ? kRecordedAnswered : 0);
        WriteRecord(feed, record, MessageBytes(m_message, m_bytes), BytesOf(m_facts.answer));
    }

  private:
    uint32_t Elapsed() const { return static_cast<uint32_t>(SystemClock().MonotonicMicroseconds() - m_start); }

    const wchar_t* m_message;
    const uint64_t m_bytes;
    CallFacts m_facts;
    const CallFactsScope m_scope{m_facts};
    const int64_t m_begin = RecordingTime();
    const uint64_t m_start = SystemClock().MonotonicMicroseconds();
};

unsigned DispatchRecorded(const CommandMap& map, const wchar_t* message, uint64_t bytes, const TracedCall& call,
                          RecordingFeed& feed) {
    try {
        const unsigned result = DispatchCommand(map, message, bytes);
        call.Record(feed, result == 1 ? 0 : kRecordedRefused);
        return result;
    } catch (...) {
        call.Record(feed, kRecordedThrew);
        throw;
    }
}

}  // namespace

void StartTrace() noexcept {
    g_feed = OpenTraceFeed();
    OpenRecordingFeed();
}

TraceFeed* WatchedFeed() noexcept {
    TraceFeed* const feed = g_feed.load(std::memory_order_relaxed);
    return feed != nullptr && feed->IsWatched() ? feed : nullptr;
}

unsigned TracedDispatch(const CommandMap& map, const wchar_t* message, uint64_t bytes) {
    TraceFeed* const feed = WatchedFeed();
    RecordingFeed* const recording = WatchedRecordingFeed();
    if (feed == nullptr && recording == nullptr) {
        return DispatchCommand(map, message, bytes);
    }
    const TracedCall call(message, bytes, recording != nullptr);
    const unsigned result = recording == nullptr ? DispatchCommand(map, message, bytes)
                                                 : DispatchRecorded(map, message, bytes, call, *recording);
    if (feed != nullptr && result == 1) {
        call.Trace(*feed);
    }
    return result;
}

}  // namespace wrb
