#include "CommandLine.h"

#include <windows.h>
// shellapi.h needs windows.h before it.
#include <shellapi.h>

#include <algorithm>
#include <sstream>

#include "Console.h"
#include "ExitCode.h"
#include "Handle.h"
#include "NearestName.h"
#include "Terminal.h"
#include "Text.h"
#include "Version.h"

namespace wrb {

std::vector<std::wstring> SplitCommandLine(const wchar_t* line) {
    int count = 0;
    const LocalMemory memory(CommandLineToArgvW(line, &count));
    wchar_t** const texts = static_cast<wchar_t**>(memory.Get());
    return memory ? std::vector<std::wstring>(texts, texts + count) : std::vector<std::wstring>();
}

std::vector<std::string> Utf8Arguments() {
    std::vector<std::string> arguments;
    for (const std::wstring& argument : SplitCommandLine(GetCommandLineW())) {
        arguments.push_back(WideToUtf8(argument));
    }
    arguments.erase(arguments.begin(), arguments.begin() + (arguments.empty() ? 0 : 1));
    return arguments;
}

// Backslashes count only before a quote, where each needs another one.
std::wstring QuotedArgument(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        return argument;
    }
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

namespace {

// "/dir/file" is a path, not an option as in older Windows programs.
void TakeSlashesAsPaths(CLI::App& app) {
    app.allow_windows_style_options(false);
    for (CLI::App* subcommand : app.get_subcommands([](CLI::App*) { return true; })) {
        TakeSlashesAsPaths(*subcommand);
    }
}

// The subcommand that the command line has come to.
const CLI::App& Deepest(const CLI::App& app) {
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    return parsed.empty() ? app : Deepest(*parsed.front());
}

// What an unknown word may stand for.
std::string Suggestion(const CLI::App& app, const std::string& word) {
    const CLI::App& deepest = Deepest(app);
    std::vector<std::wstring> names;
    for (const CLI::App* subcommand : deepest.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(Utf8ToWide(subcommand->get_name()));
    }
    for (const CLI::Option* option : deepest.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back(L"--" + Utf8ToWide(name));
        }
    }
    const std::vector<std::wstring_view> candidates(names.begin(), names.end());
    const std::wstring_view nearest = NearestName(Utf8ToWide(word), candidates);
    return nearest.empty() ? std::string() : "Did you mean " + WideToUtf8(nearest) + "?\n";
}

int Report(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    if (app.exit(error, out, err) == 0) {
        PrintOut(WrapText(out.str(), TerminalColumns()));
        return kExitOk;
    }
    const std::vector<std::string> unknown = app.remaining(true);
    PrintErr(app.get_name() + ": " + err.str() + (unknown.empty() ? std::string() : Suggestion(app, unknown.front())));
    return kExitUsage;
}

}  // namespace

std::optional<int> ParseArguments(CLI::App& app, std::vector<std::string> arguments) {
    TakeSlashesAsPaths(app);
    app.set_version_flag("--version", VersionText(app.get_name()), "Show version and commit");
    std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the end
    try {
        app.parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::RequiredError& error) {
        // CLI11 reports missing arguments first. An unknown word, such as a misspelt subcommand, is the more useful
        // message.
        const std::vector<std::string> unknown = app.remaining(true);
        return unknown.empty() ? Report(app, error) : Report(app, CLI::ExtrasError({unknown.front()}));
    } catch (const CLI::ParseError& error) {
        return Report(app, error);
    }
}

}  // namespace wrb
