#include "Formats.h"
#include "RecordingFormat.h"

namespace wrb {
namespace {

void DecodeCommand(FieldCursor& record) {
    record.TakeNumber("begin in microseconds", 8);
    record.TakeNumber("run time in microseconds", 4);
    record.TakeNumber("flags", 4, true);
    const auto message = static_cast<std::size_t>(record.TakeNumber("bytes of the message", 4));
    const auto answer = static_cast<std::size_t>(record.TakeNumber("bytes of the answer", 4));
    for (const auto& [bytes, name] : {std::pair(message, "message: "), std::pair(answer, "answer: ")}) {
        FieldCursor part = record.TakePart(bytes, name);
        if (IsText(part.Rest())) {
            DecodeText(part);
        }
        part.TakeRest("bytes");
    }
    if (!record.AtEnd()) {
        record.Fail("is longer than its parts");
    }
}

}  // namespace

bool IsRecording(std::span<const uint8_t> bytes) {
    return BeginsWith(bytes, {'W', 'R', 'B', 'R'});
}

void DecodeRecording(FieldCursor& cursor) {
    cursor.TakeNumber("signature", 4, true);
    const uint64_t version = cursor.TakeNumber("version", 4);
    const uint64_t headBytes = cursor.TakeNumber("bytes of the head", 4);
    if (version != kRecordingVersion || headBytes < sizeof(RecordingHead)) {
        cursor.Fail("not version 1");
    }
    cursor.TakeNumber("masked", 4);
    cursor.TakeNumber("begin in microseconds", 8);
    if (headBytes != sizeof(RecordingHead)) {
        cursor.TakeBytes("more head", static_cast<std::size_t>(headBytes) - sizeof(RecordingHead));
    }
    for (uint64_t number = 0;;) {
        if (cursor.AtEnd()) {
            cursor.Fail("the recording has no end: it is cut short");
        }
        const std::string name = "#" + std::to_string(number + 1) + " ";
        FieldCursor head = cursor.TakePart(sizeof(RecordHead), name);
        const uint64_t bytes = head.TakeNumber("bytes", 4);
        const auto kind = static_cast<RecordKind>(head.TakeNumber("kind", 4));
        if (bytes < sizeof(RecordHead) || bytes - sizeof(RecordHead) > cursor.Rest().size()) {
            head.Fail("is cut short, or its length is wrong");
        }
        FieldCursor body = cursor.TakePart(static_cast<std::size_t>(bytes) - sizeof(RecordHead), name);
        switch (kind) {
            case RecordKind::Command:
                DecodeCommand(body);
                ++number;
                break;
            case RecordKind::Missed:
                body.TakeNumber("missed commands", 8);
                break;
            case RecordKind::End:
                body.TakeNumber("commands", 8);
                return;
            default:
                body.TakeRest("unknown record");
        }
    }
}

}  // namespace wrb
