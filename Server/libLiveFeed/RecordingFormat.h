// The records of a recording, as they lie in the live feed and in a file. docs/wire-formats.md has the layout.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace wrb {

inline constexpr uint32_t kRecordingSignature = 0x52425257;  // "WRBR"
inline constexpr uint32_t kRecordingVersion = 1;

// Now, as recordings have it: microseconds since 1970-01-01 00:00 UTC.
inline int64_t RecordingTime() {
    using namespace std::chrono;
    return floor<microseconds>(system_clock::now()).time_since_epoch().count();
}

// At the start of a file.
struct RecordingHead {
    uint32_t signature = kRecordingSignature;
    uint32_t version = kRecordingVersion;
    uint32_t headBytes = sizeof(RecordingHead);  // the records begin behind them
    uint32_t isMasked = 0;
    int64_t beginMicroseconds = 0;  // of the recording, since 1970-01-01 00:00 UTC
};
static_assert(sizeof(RecordingHead) == 24);

enum class RecordKind : uint32_t {
    Command = 1,  // RecordedCommand, the message, the answer
    Missed = 2,   // u64: commands that could not be recorded at this place
    End = 3,      // u64: commands in the file. A file without it is cut short
};

struct RecordHead {
    uint32_t bytes;  // of the whole record
    RecordKind kind;
};

// The bits of RecordedCommand::flags.
inline constexpr uint32_t kRecordedRefused = 0x1;   // the library knows no such command
inline constexpr uint32_t kRecordedThrew = 0x2;     // it ended with an exception
inline constexpr uint32_t kRecordedFailed = 0x4;    // it reported failure, or its answer could not be sent
inline constexpr uint32_t kRecordedAnswered = 0x8;  // it sent an answer, perhaps an empty one

struct RecordedCommand {
    RecordHead head{sizeof(RecordedCommand), RecordKind::Command};
    int64_t beginMicroseconds = 0;  // since 1970-01-01 00:00 UTC
    uint32_t runMicroseconds = 0;   // until its answer was written
    uint32_t flags = 0;
    uint32_t messageBytes = 0;
    uint32_t answerBytes = 0;
};
static_assert(sizeof(RecordedCommand) == 32);

// A command record in memory, checked: its parts fill the record.
struct RecordView {
    RecordedCommand command;
    std::span<const uint8_t> message;
    std::span<const uint8_t> answer;
};

// Nothing: the bytes, from the record's first one to its last, are no command record.
inline std::optional<RecordView> ViewCommandRecord(std::span<const uint8_t> record) noexcept {
    RecordView view;
    if (record.size() < sizeof view.command) {
        return std::nullopt;
    }
    std::memcpy(&view.command, record.data(), sizeof view.command);
    const std::span<const uint8_t> body = record.subspan(sizeof view.command);
    if (view.command.head.kind != RecordKind::Command || view.command.head.bytes != record.size() ||
        view.command.messageBytes > body.size() ||
        view.command.answerBytes != body.size() - view.command.messageBytes) {
        return std::nullopt;
    }
    view.message = body.first(view.command.messageBytes);
    view.answer = body.subspan(view.command.messageBytes);
    return view;
}

}  // namespace wrb
