// A queue of command records in shared memory, from the process that serves commands to one program that records them.
//
// The writer never waits: what does not fit is counted. The reader loses nothing that was not counted, and no record
// that was written is overwritten before it is read. A reader that ends without a word is forgotten after three
// seconds; until another one comes, commands are counted only.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <string>

#include "RecordingFormat.h"

namespace wrb {

// Lives in a section, which begins with zeros. Both sides check what they find there: a broken section costs records,
// never an access outside it.
class RecordingFeed {
  public:
    static constexpr uint32_t kQueueBytes = 8u << 20;

    // ---- the writers, of one process: any thread ----

    // While nobody records, one load.
    bool HasReader() const noexcept { return m_reader.load(std::memory_order_relaxed) != 0; }
    bool IsRead() const noexcept;

    void CountMissed() noexcept { m_missed.fetch_add(1, std::memory_order_relaxed); }

    // One thread at a time. Sets the lengths in `command`. A record that does not fit counts as missed.
    void Write(RecordedCommand command, std::span<const uint8_t> message, std::span<const uint8_t> answer) noexcept;

    // ---- the reader: one thread ----

    // `id` is not 0 and this reader's own. False: another one reads.
    bool Begin(uint32_t id) noexcept;
    void End() noexcept { m_reader.store(0); }

    // Keeps the writers writing. False: another reader has come.
    bool Look(uint32_t id) noexcept;

    // The next record; false: there is none. Throws std::bad_alloc.
    bool Read(std::string& record);

    // Commands of the time since Begin that are in no record.
    uint64_t Missed() const noexcept { return m_missed.load(std::memory_order_relaxed) - m_missedBefore; }

  private:
    void CopyIn(uint64_t position, std::span<const uint8_t> bytes) noexcept;
    void CopyOut(uint64_t position, void* bytes, std::size_t count) const noexcept;

    std::atomic<uint32_t> m_reader;  // 0: none
    std::atomic<uint64_t> m_lastLook;
    std::atomic<uint64_t> m_missed;
    uint64_t m_missedBefore;          // the reader's
    std::atomic<uint64_t> m_written;  // bytes since the start; only the writer changes it
    std::atomic<uint64_t> m_read;     // the same of the reader
    std::array<uint8_t, kQueueBytes> m_queue;
};

// docs/wire-formats.md has the places.
static_assert(sizeof(RecordingFeed) == 48 + RecordingFeed::kQueueBytes);

// The name of the section of a process that serves commands.
std::wstring RecordingSection(uint32_t processId);

// Makes that of this process, once, for SYSTEM, the administrators and the account of this process. When the system
// refuses, or something of that name is there, nobody can record this process: messages hold personal data, and go into
// no section of somebody else.
void OpenRecordingFeed() noexcept;

// It, while somebody records, else null. A command that comes when the reader has been forgotten counts as missed.
RecordingFeed* WatchedRecordingFeed() noexcept;

// Any thread.
void WriteRecord(RecordingFeed& feed, const RecordedCommand& command, std::span<const uint8_t> message,
                 std::span<const uint8_t> answer) noexcept;

}  // namespace wrb
