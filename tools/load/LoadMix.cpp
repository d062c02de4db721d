#include "LoadMix.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>

#include "CommandCatalog.h"
#include "CommandLine.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr unsigned kMostWeight = 1'000'000;
constexpr std::size_t kMostCommands = 1'000;  // the sum of the weights stays in 32 bits

constexpr char kDefaultMix[] = R"(
60 CMDHL_IS_CONFIGFLAGSET UID 4294967295
12 CMDHL_GET_ALL_SCAN_CFG UID
4 CMDHL_GET_MS_CFG UID
4 CMDHL_GET_RT_CFG UID
4 CMDHL_GET_RT_CFG_EX UID
3 CMDHL_GET_SPY_RT_CFG UID
3 CMDHL_GET_NCIE_SETTING UID
3 CMDHL_GET_SCAN_METHOD UID
2 CMDHL_GET_IP_BY_UID UID
2 CMDHL_GET_INI_GLOBALSETTING
1 CMDHL_GET_SERVER_NAME
2 CMDHL_ECHO hello
)";

// Nothing for an empty line or a comment. Throws std::invalid_argument.
std::optional<MixEntry> ParseLine(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (line.empty() || line.starts_with('#')) {
        return std::nullopt;
    }
    const std::vector<std::wstring> words = SplitCommandLine(Utf8ToWide(line).c_str());
    MixEntry entry;
    const std::string weight = WideToUtf8(words[0]);
    const auto [end, error] = std::from_chars(weight.data(), weight.data() + weight.size(), entry.weight);
    if (error != std::errc() || *end != '\0' || entry.weight == 0 || entry.weight > kMostWeight) {
        throw std::invalid_argument("\"" + weight + "\" is no weight from 1 to 1000000");
    }
    const CommandEntry* const command = words.size() < 2 ? nullptr : FindCommand(words[1]);
    if (command == nullptr) {
        throw std::invalid_argument("no such command; 'wrbctl commands' lists them");
    }
    entry.command = words[1];
    entry.answers = command->Answers();
    entry.fields.assign(words.begin() + 2, words.end());
    return entry;
}

}  // namespace

LoadMix ParseLoadMix(std::string_view text) {
    LoadMix mix;
    for (unsigned number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        line = line.substr(0, line.find('\r'));
        try {
            if (const std::optional<MixEntry> entry = ParseLine(line)) {
                if (mix.size() == kMostCommands) {
                    throw std::invalid_argument("more than " + std::to_string(kMostCommands) + " commands");
                }
                mix.push_back(*entry);
            }
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument("line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (mix.empty()) {
        throw std::invalid_argument("no line names a command");
    }
    return mix;
}

const LoadMix& DefaultLoadMix() {
    static const LoadMix mix = ParseLoadMix(kDefaultMix);
    return mix;
}

}  // namespace wrb
