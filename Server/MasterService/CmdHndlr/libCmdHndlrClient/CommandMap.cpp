#include "CommandMap.h"

#include <cwchar>

#include "CmdProtocol.h"

namespace wrb {
namespace {

constexpr wchar_t kPrefix[] = L"CMDHL_";
constexpr std::size_t kPrefixLength = std::size(kPrefix) - 1;
constexpr uint64_t kLeastBytes = 15;

}  // namespace

void AddCommands(CommandMap& map, std::span<const CommandRow> rows) {
    for (const CommandRow& row : rows) {
        map.try_emplace(row.name, &row);
    }
}

unsigned DispatchCommand(const CommandMap& map, const wchar_t* message, uint64_t bytes) {
    // wcsncmp stops at a terminator: the text may be shorter than the prefix.
    if (message == nullptr || bytes < kLeastBytes || std::wcsncmp(message, kPrefix, kPrefixLength) != 0) {
        return 0;
    }
    // A signed 32-bit size. -1 (all ones) asks CCmdProtocol to measure the text.
    const auto size = static_cast<int32_t>(static_cast<uint32_t>(bytes));
    if (size < -1) {
        return 0;  // negative size: reject
    }
    CCmdProtocol fields(message, size);
    std::wstring name;
    fields >> name;
    const auto found = map.find(name);
    if (found == map.end()) {
        return 0;
    }
    RunHandler(found->second->slot, found->second->handler, fields);
    return 1;
}

}  // namespace wrb
