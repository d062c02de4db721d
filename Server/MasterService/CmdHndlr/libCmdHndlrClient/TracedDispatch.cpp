#include "TracedDispatch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string_view>

#include "CallFacts.h"
#include "Clock.h"
#include "CmdProtocol.h"

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

class TracedCall {
  public:
    // For a command that has ended.
    void Write(TraceFeed& feed, const wchar_t* message, uint64_t bytes) const {
        using namespace std::chrono;
        TracedCommand record{};
        record.microseconds = static_cast<uint32_t>(SystemClock().MonotonicMicroseconds() - m_start);
        record.endMilliseconds = floor<milliseconds>(system_clock::now()).time_since_epoch().count();
        record.answerBytes = m_facts.answerBytes;
        record.requests = m_facts.requests;
        record.hasFailed = m_facts.hasFailed ? 1 : 0;
        FillNames(message, bytes, record);
        feed.Write(record);
    }

  private:
    CallFacts m_facts;
    const CallFactsScope m_scope{m_facts};
    const uint64_t m_start = SystemClock().MonotonicMicroseconds();
};

}  // namespace

void StartTrace() noexcept {
    g_feed = OpenTraceFeed();
}

TraceFeed* WatchedFeed() noexcept {
    TraceFeed* const feed = g_feed.load(std::memory_order_relaxed);
    return feed != nullptr && feed->IsWatched() ? feed : nullptr;
}

unsigned TracedDispatch(const CommandMap& map, const wchar_t* message, uint64_t bytes) {
    TraceFeed* const feed = WatchedFeed();
    if (feed == nullptr) {
        return DispatchCommand(map, message, bytes);
    }
    TracedCall call;
    const unsigned result = DispatchCommand(map, message, bytes);
    if (result == 1) {
        call.Write(*feed, message, bytes);
    }
    return result;
}

}  // namespace wrb
