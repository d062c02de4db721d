#include "FaultRule.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <random>
#include <stdexcept>

#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kLongestDelay = 3'600'000;

constexpr struct {
    std::string_view name;
    FaultKind kind;
} kKinds[] = {{"delay", FaultKind::Delay},
              {"close", FaultKind::Close},
              {"garbage", FaultKind::Garbage},
              {"truncate", FaultKind::Truncate},
              {"silence", FaultKind::Silence}};

[[noreturn]] void Refuse(std::string_view text, const char* why) {
    throw std::invalid_argument("\"" + std::string(text) + "\": " + why);
}

// The part before the separator, which is taken off too.
std::string_view TakePart(std::string_view& rest, char separator) {
    const std::string_view part = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    return part;
}

uint32_t TakeNumber(std::string_view& rest) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return error == std::errc() ? number : 0;
}

uint32_t ReadTime(std::string_view text) {
    std::string_view unit = text;
    const uint64_t number = TakeNumber(unit);
    const uint64_t milliseconds = unit == "s" ? number * 1000 : unit == "ms" ? number : 0;
    if (milliseconds == 0 || milliseconds > kLongestDelay) {
        Refuse(text, "not a time up to an hour, such as 2s or 500ms");
    }
    return static_cast<uint32_t>(milliseconds);
}

void ReadKind(std::string_view text, FaultRule& rule) {
    std::string_view time = text;
    const auto* const kind = std::ranges::find(kKinds, TakePart(time, '='), [](const auto& row) { return row.name; });
    if (kind == std::end(kKinds)) {
        Refuse(text, "no kind of fault; take delay=TIME, close, garbage, truncate or silence");
    }
    rule.kind = kind->kind;
    if (rule.kind == FaultKind::Delay) {
        rule.milliseconds = ReadTime(time);
    } else if (!time.empty()) {
        Refuse(text, "only a delay has a time");
    }
}

}  // namespace

std::optional<std::vector<uint8_t>> SpoiltAnswer(FaultKind kind, std::span<const uint8_t> answer) {
    constexpr std::size_t kLeastGarbage = 64;
    std::vector<uint8_t> bytes;
    if (kind == FaultKind::Silence) {
        return std::nullopt;
    }
    if (kind == FaultKind::Truncate) {
        bytes.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(answer.size() / 2));
    } else if (kind == FaultKind::Garbage) {
        std::minstd_rand random;
        bytes.resize(std::max(answer.size(), kLeastGarbage));
        std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random() >> 8); });
    }
    return bytes;
}

bool CanFail(DbCommand command, FaultKind kind) noexcept {
    return DescribeDbCommand(command).answer != DbAnswer::None || kind == FaultKind::Delay ||
           kind == FaultKind::Silence;
}

FaultRule ParseFaultRule(std::string_view text) {
    FaultRule rule;
    std::string_view rest = text;
    if (const std::string_view command = TakePart(rest, ':'); command != "*") {
        rule.command = FindDbCommand(Utf8ToWide(command));
        if (!rule.command) {
            Refuse(command, "no command of the database server, nor \"*\"");
        }
    }
    ReadKind(TakePart(rest, ':'), rule);
    if (!rest.empty()) {
        std::string_view number = rest;
        rule.every = TakePart(number, '=') == "every" ? TakeNumber(number) : 0;
        if (rule.every == 0 || !number.empty()) {
            Refuse(rest, "not every=N");
        }
    }
    if (rule.command && !CanFail(*rule.command, rule.kind)) {
        Refuse(text, "a write can only be delayed and silenced");
    }
    return rule;
}

std::string FaultText(const FaultRule& rule) {
    const auto* const kind = std::ranges::find(kKinds, rule.kind, [](const auto& row) { return row.kind; });
    return (rule.command ? WideToUtf8(DbName(*rule.command)) : "*") + ":" + std::string(kind->name) +
           (rule.kind == FaultKind::Delay ? "=" + std::to_string(rule.milliseconds) + "ms" : "") +
           (rule.every == 1 ? "" : ":every=" + std::to_string(rule.every));
}

}  // namespace wrb
