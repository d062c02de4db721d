#include "Decode.h"

#include <algorithm>

#include "Formats.h"

namespace wrb {
namespace {

constexpr struct {
    const char* kind;
    bool (*is)(std::span<const uint8_t> bytes);
    void (*decode)(FieldCursor& cursor);
} kFormats[] = {
    {"request to the database server", IsFrame, DecodeFrame},
    {"recording", IsRecording, DecodeRecording},
    {"message", IsMessage, DecodeMessage},
    {"firewall log", IsFirewallLog, DecodeFirewallLog},
    {"form of a gateway request", IsForm, DecodeForm},
};

void DecodeAs(FieldCursor& cursor, std::span<const uint8_t> bytes) {
    Decoded& decoded = cursor.Target();
    const auto* const format = std::ranges::find_if(kFormats, [&](const auto& row) { return row.is(bytes); });
    if (format != std::end(kFormats)) {
        decoded.kind = format->kind;
        format->decode(cursor);
    } else if (IsText(bytes)) {
        decoded.kind = DecodeText(cursor);
    } else {
        decoded.kind = "unknown";
        cursor.TakeRest("bytes");
        cursor.Fail("none of the formats begins like this");
    }
    if (!cursor.AtEnd()) {
        cursor.TakeRest("rest");
        cursor.Fail("bytes behind the end");
    }
}

}  // namespace

bool BeginsWith(std::span<const uint8_t> bytes, std::initializer_list<uint8_t> start) {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

Decoded Decode(std::span<const uint8_t> bytes) {
    Decoded decoded;
    FieldCursor cursor(bytes, decoded);
    try {
        DecodeAs(cursor, bytes);
    } catch (const DecodeProblem& problem) {
        decoded.problem = problem.what();
        const std::size_t done =
            decoded.fields.empty() ? 0 : decoded.fields.back().offset + decoded.fields.back().bytes;
        if (done < bytes.size()) {
            decoded.fields.push_back({done, bytes.size() - done, "rest", HexText(bytes.subspan(done))});
        }
    }
    return decoded;
}

}  // namespace wrb
