#include "CommandFilter.h"

#include "Text.h"
#include "TextSearch.h"

namespace wrb {

bool CommandFilter::Admits(std::wstring_view name, std::wstring_view agent) const {
    return ContainsIgnoringCase(name, Utf8ToWide(command)) && ContainsIgnoringCase(agent, Utf8ToWide(uid));
}

void AddFilter(CLI::App& app, CommandFilter& filter) {
    app.add_option("--command", filter.command, "Commands with this text in their name");
    app.add_option("--uid", filter.uid, "Commands of agents with this text in their uid");
}

}  // namespace wrb
