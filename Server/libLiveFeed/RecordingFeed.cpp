#include "RecordingFeed.h"

#include <windows.h>

#include <algorithm>
#include <new>

#include "Handle.h"
#include "SRWLock.h"
#include "ServerAccess.h"

namespace wrb {
namespace {

constexpr uint64_t kForgottenMilliseconds = 3000;

std::atomic<RecordingFeed*> g_feed{nullptr};
CWrbSRWLock g_writers;

// The handle keeps the section's name. Neither is ever given back: a command may end at any time.
RecordingFeed* MapFeed() {
    ServerAccess access(OtherAccounts::NothingNorServices);
    if (access.Attributes() == nullptr) {
        return nullptr;
    }
    KernelHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, access.Attributes(), PAGE_READWRITE, 0,
                                            static_cast<DWORD>(sizeof(RecordingFeed)),
                                            RecordingSection(GetCurrentProcessId()).c_str()));
    if (!section || GetLastError() == ERROR_ALREADY_EXISTS) {
        return nullptr;
    }
    void* const view = MapViewOfFile(section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(RecordingFeed));
    if (view != nullptr) {
        static_cast<void>(section.Release());
    }
    return static_cast<RecordingFeed*>(view);
}

}  // namespace

std::wstring RecordingSection(uint32_t processId) {
    return L"Global\\Calloway_Warrenby_Recording_" + std::to_wstring(processId);
}

void OpenRecordingFeed() noexcept {
    try {
        static RecordingFeed* const feed = MapFeed();
        g_feed = feed;
    } catch (const std::bad_alloc&) {
        // Nobody can record this process.
    }
}

RecordingFeed* WatchedRecordingFeed() noexcept {
    RecordingFeed* const feed = g_feed.load(std::memory_order_relaxed);
    if (feed == nullptr || !feed->HasReader()) {
        return nullptr;
    }
    if (!feed->IsRead()) {
        feed->CountMissed();
        return nullptr;
    }
    return feed;
}

void WriteRecord(RecordingFeed& feed, const RecordedCommand& command, std::span<const uint8_t> message,
                 std::span<const uint8_t> answer) noexcept {
    const ExclusiveGuard guard(g_writers);
    feed.Write(command, message, answer);
}

bool RecordingFeed::IsRead() const noexcept {
    return GetTickCount64() - m_lastLook.load(std::memory_order_relaxed) < kForgottenMilliseconds;
}

void RecordingFeed::Write(RecordedCommand command, std::span<const uint8_t> message,
                          std::span<const uint8_t> answer) noexcept {
    const uint64_t written = m_written.load(std::memory_order_relaxed);
    const uint64_t waiting = written - m_read.load(std::memory_order_acquire);
    const uint64_t bytes = sizeof command + uint64_t{message.size()} + answer.size();
    if (waiting > kQueueBytes || bytes > kQueueBytes - waiting) {
        CountMissed();
        return;
    }
    command.head.bytes = static_cast<uint32_t>(bytes);
    command.messageBytes = static_cast<uint32_t>(message.size());
    command.answerBytes = static_cast<uint32_t>(answer.size());
    CopyIn(written, {reinterpret_cast<const uint8_t*>(&command), sizeof command});
    CopyIn(written + sizeof command, message);
    CopyIn(written + sizeof command + message.size(), answer);
    m_written.store(written + bytes, std::memory_order_release);
}

bool RecordingFeed::Begin(uint32_t id) noexcept {
    uint32_t other = m_reader.load();
    if ((other != 0 && IsRead()) || !m_reader.compare_exchange_strong(other, id)) {
        return false;
    }
    m_read.store(m_written.load());
    m_missedBefore = m_missed.load();
    return Look(id);
}

bool RecordingFeed::Look(uint32_t id) noexcept {
    m_lastLook.store(GetTickCount64(), std::memory_order_relaxed);
    return m_reader.load() == id;
}

bool RecordingFeed::Read(std::string& record) {
    const uint64_t begin = m_read.load(std::memory_order_relaxed);
    const uint64_t end = m_written.load(std::memory_order_acquire);
    const uint64_t waiting = end - begin;
    if (waiting == 0) {
        return false;
    }
    uint32_t bytes = 0;
    CopyOut(begin, &bytes, sizeof bytes);
    if (waiting > kQueueBytes || bytes < sizeof(RecordedCommand) || bytes > waiting) {
        CountMissed();  // the section is broken: drop all that waits
        m_read.store(end, std::memory_order_release);
        return false;
    }
    record.resize(bytes);
    CopyOut(begin, record.data(), bytes);
    m_read.store(begin + bytes, std::memory_order_release);
    return true;
}

// The end of the queue continues at its beginning.
void RecordingFeed::CopyIn(uint64_t position, std::span<const uint8_t> bytes) noexcept {
    const std::size_t at = position % kQueueBytes;
    const std::size_t first = std::min(bytes.size(), kQueueBytes - at);
    std::ranges::copy(bytes.first(first), m_queue.begin() + static_cast<std::ptrdiff_t>(at));
    std::ranges::copy(bytes.subspan(first), m_queue.begin());
}

void RecordingFeed::CopyOut(uint64_t position, void* bytes, std::size_t count) const noexcept {
    const std::size_t at = position % kQueueBytes;
    const std::size_t first = std::min(count, kQueueBytes - at);
    std::memcpy(bytes, m_queue.data() + at, first);
    std::memcpy(static_cast<uint8_t*>(bytes) + first, m_queue.data(), count - first);
}

}  // namespace wrb
