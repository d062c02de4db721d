// What simulated agents ask, and how often each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wrb {

struct MixEntry {
    unsigned weight = 1;   // of the sum of all weights
    std::wstring command;  // one of the command table
    bool answers = true;
    std::vector<std::wstring> fields;  // after the reply pipe; kMixUid stands for the agent
};

using LoadMix = std::vector<MixEntry>;

inline constexpr wchar_t kMixUid[] = L"UID";

// Lines "WEIGHT COMMAND [FIELD...]", UTF-8; a field with blanks stands in quotes. Empty lines and lines that begin with
// "#" are skipped. A thousand commands at most. Throws std::invalid_argument, whose text names the line and says what
// is wrong.
LoadMix ParseLoadMix(std::string_view text);

// What agents of a quiet day ask. Nothing of it changes the server or clears a configuration-changed bit.
const LoadMix& DefaultLoadMix();

}  // namespace wrb
