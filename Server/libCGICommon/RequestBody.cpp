#include "RequestBody.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "DebugLog.h"
#include "PostSizeLimit.h"

namespace wrb {
namespace {

// For the %d of a log line.
int32_t Shown(int64_t number) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(number, Limits::min(), Limits::max()));
}

// Nothing for a text that is no number.
std::optional<int64_t> ParseContentLength(std::string_view text) noexcept {
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) {
        return std::nullopt;
    }
    constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();
    int64_t length = 0;
    for (const char digit : digits) {
        const int value = digit - '0';
        length = length > (kHighest - value) / 10 ? kHighest : length * 10 + value;
    }
    return digits.size() == text.size() ? length : -length;
}

int64_t AnnouncedLength(IGateway& gateway, const wchar_t* function) {
    const std::string text = gateway.Variable(L"CONTENT_LENGTH").value_or("");
    const std::optional<int64_t> length = ParseContentLength(text);
    if (!length && !text.empty()) {
        WRB_LOG('W', L"%s - CONTENT_LENGTH is no number: [%S].", function, text.c_str());
    }
    return length.value_or(0);
}

void ReadWhole(IGateway& gateway, RequestBody& body, std::size_t length, const wchar_t* function) {
    WRB_LOG('D', L"%s - fread >>>", function);
    body.size = gateway.ReadBody(body.bytes.get(), length);
    WRB_LOG('D', L"%s - fread <<<", function);
    body.bytes[body.size] = '\0';
    body.state = BodyState::Whole;
    if (body.size < length) {
        body.state = BodyState::Cut;
        WRB_LOG('W', L"%s - the body ends at [%d] of [%d] bytes.", function, Shown(static_cast<int64_t>(body.size)),
                Shown(static_cast<int64_t>(length)));
    }
}

}  // namespace

RequestBody ReadRequestBody(IGateway& gateway, const wchar_t* function) {
    RequestBody body;
    const int64_t length = AnnouncedLength(gateway, function);
    if (length == 0) {
        return body;
    }
    const int32_t highest = PostSizeLimit(gateway);
    if (length < 0 || length > highest) {
        WRB_LOG('E', L"%s - Content size[%d] is large then POST size limitation: [%d].", function, Shown(length),
                highest);
        body.state = BodyState::TooLong;
        return body;
    }
    const auto size = static_cast<std::size_t>(length);
    body.bytes.reset(new (std::nothrow) char[size + 1]);
    if (body.bytes == nullptr) {
        WRB_LOG('D', L"%s - malloc failed.", function);
        body.state = BodyState::NoMemory;
        return body;
    }
    ReadWhole(gateway, body, size, function);
    return body;
}

}  // namespace wrb
