#include <string>
#include <string_view>

#include "Console.h"
#include "ExitCode.h"
#include "Subcommands.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl completion bash >> ~/.bashrc
  wrbctl completion powershell >> $PROFILE

Exit codes: 0 done, 2 wrong command line.
)";

struct CompletionOptions {
    std::string shell;
    const CLI::App* app = nullptr;
};

void Replace(std::string& text, std::string_view mark, const std::string& by) {
    if (const std::size_t at = text.find(mark); at != text.npos) {
        text.replace(at, mark.size(), by);
    }
}

std::string OptionsOf(const CLI::App& app) {
    std::string words;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            words += (words.empty() ? "--" : " --") + name;
        }
    }
    for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
        words += " " + subcommand->get_name();
    }
    return words;
}

// A line a subcommand, in the form of the shell's branches.
std::string Branches(const CLI::App& app, const char* before, const char* between, const char* after) {
    std::string text;
    for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
        text += before + subcommand->get_name() + between + OptionsOf(*subcommand) + after;
    }
    return text;
}

std::string BashScript(const CLI::App& app) {
    std::string script = R"(_wrbctl() {
    local words
    case "${COMP_WORDS[1]}" in
@BRANCHES@        *) words="@ALL@" ;;
    esac
    [ "$COMP_CWORD" -gt 1 ] || words="@ALL@"
    COMPREPLY=($(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}"))
}
complete -o default -F _wrbctl wrbctl wrbctl.exe
)";
    Replace(script, "@BRANCHES@", Branches(app, "        ", ") words=\"", "\" ;;\n"));
    Replace(script, "@ALL@", OptionsOf(app));
    Replace(script, "@ALL@", OptionsOf(app));
    return script;
}

std::string PowerShellScript(const CLI::App& app) {
    std::string script = R"(Register-ArgumentCompleter -Native -CommandName wrbctl, wrbctl.exe -ScriptBlock {
    param($word, $command, $position)
    $all = '@ALL@'
    $options = @{
@BRANCHES@    }
    $parts = $command.CommandElements
    $name = if ($parts.Count -gt 1) { $parts[1].ToString() } else { '' }
    $words = if ($options.ContainsKey($name) -and $name -ne $word) { $options[$name] } else { $all }
    $words -split ' ' | Where-Object { $_ -like "$word*" } |
        ForEach-Object { [System.Management.Automation.CompletionResult]::new($_) }
}
)";
    Replace(script, "@BRANCHES@", Branches(app, "        '", "' = '", "'\n"));
    Replace(script, "@ALL@", OptionsOf(app));
    return script;
}

int RunCompletion(const CompletionOptions& options) {
    PrintOut(options.shell == "bash" ? BashScript(*options.app) : PowerShellScript(*options.app));
    return kExitOk;
}

}  // namespace

void AddCompletion(CLI::App& app, Run& run) {
    const auto options = std::make_shared<CompletionOptions>();
    options->app = &app;
    CLI::App* const completion = AddSubcommand(app, "completion", "Print a script with which a shell completes words",
                                               kExamples, options, RunCompletion, run);
    completion->add_option("shell", options->shell, "bash or powershell")
        ->required()
        ->check(CLI::IsMember({"bash", "powershell"}));
}

}  // namespace wrb
