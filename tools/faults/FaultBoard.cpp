#include "FaultBoard.h"

namespace wrb {
namespace {

constexpr uint32_t kEveryCommand = 0xFFFFFFFF;

uint32_t NumberOf(std::optional<DbCommand> command) noexcept {
    return command ? static_cast<uint32_t>(*command) : kEveryCommand;
}

}  // namespace

FaultRule FaultBoard::Place::Rule() const noexcept {
    FaultRule rule{.command = {}, .kind = FaultKind::None, .milliseconds = milliseconds};
    rule.every = every;
    if (const uint32_t number = kind; number <= static_cast<uint32_t>(FaultKind::Silence)) {
        rule.kind = static_cast<FaultKind>(number);  // any other is not ours: somebody else has made the section
    }
    if (const uint32_t number = command; number < std::size(kDbCommands)) {
        rule.command = static_cast<DbCommand>(number);
    }
    return rule;
}

FaultBoard::Place* FaultBoard::Find(uint32_t command, bool orFree) noexcept {
    Place* free = nullptr;
    for (Place& place : m_places) {
        if (place.kind != 0 && place.command == command) {
            return &place;
        }
        if (place.kind == 0 && free == nullptr) {
            free = &place;
        }
    }
    return orFree ? free : nullptr;
}

bool FaultBoard::Set(const FaultRule& rule) noexcept {
    const uint32_t command = NumberOf(rule.command);
    Place* const place = Find(command, true);
    if (place == nullptr) {
        return false;
    }
    place->kind = 0;
    place->command = command;
    place->milliseconds = rule.milliseconds;
    place->every = rule.every;
    place->seen = 0;
    place->applied = 0;
    place->kind = static_cast<uint32_t>(rule.kind);
    return true;
}

void FaultBoard::Clear() noexcept {
    for (Place& place : m_places) {
        place.kind = 0;
    }
}

std::vector<FaultBoard::Entry> FaultBoard::Entries() const {
    std::vector<Entry> entries;
    for (const Place& place : m_places) {
        if (const FaultRule rule = place.Rule(); rule.kind != FaultKind::None) {
            entries.push_back({rule, place.applied});
        }
    }
    return entries;
}

std::optional<FaultRule> FaultBoard::Take(DbCommand command) noexcept {
    Place* place = Find(NumberOf(command), false);
    place = place != nullptr ? place : Find(kEveryCommand, false);
    if (place == nullptr) {
        return std::nullopt;
    }
    const FaultRule rule = place->Rule();
    if (rule.kind == FaultKind::None || rule.every == 0 || !CanFail(command, rule.kind) ||
        ++place->seen % rule.every != 0) {
        return std::nullopt;
    }
    ++place->applied;
    return rule;
}

}  // namespace wrb
