#include "CommandFilter.h"

#include <windows.h>

#include "Text.h"

namespace wrb {
namespace {

// In any case.
bool Contains(std::wstring_view text, const std::string& part) {
    const std::wstring wide = Utf8ToWide(part);
    return part.empty() || FindStringOrdinal(FIND_FROMSTART, text.data(), static_cast<int>(text.size()), wide.data(),
                                             static_cast<int>(wide.size()), TRUE) >= 0;
}

}  // namespace

bool CommandFilter::Admits(std::wstring_view name, std::wstring_view agent) const {
    return Contains(name, command) && Contains(agent, uid);
}

void AddFilter(CLI::App& app, CommandFilter& filter) {
    app.add_option("--command", filter.command, "Commands with this text in their name");
    app.add_option("--uid", filter.uid, "Commands of agents with this text in their uid");
}

}  // namespace wrb
