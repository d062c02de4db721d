#include <windows.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "CmdProtocol.h"
#include "CommandCatalog.h"
#include "Console.h"
#include "Conversation.h"
#include "Failure.h"
#include "Handle.h"
#include "JsonText.h"
#include "NearestName.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "ServicePipes.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl send CMDHL_GET_MS_CFG 11111111-2222-3333-4444-555555555555
  wrbctl send CMDHL_GET_MS_CFG ""            server-wide settings
  wrbctl send CMDHL_ECHO hello --json

Exit codes: 0 done, 1 failed, 2 wrong command line or number of fields, 3 the host does not run, 4 timed out.
)";

struct SendOptions {
    std::string command;
    std::vector<std::string> fields;  // after the reply pipe, which wrbctl adds itself
    double timeoutSeconds = 10;       // from the start to the last byte of the answer
    bool raw = false;                 // also a SET command with another number of fields than it has
    bool json = false;
};

KernelHandle StartTimer(double seconds) {
    KernelHandle timer(CreateWaitableTimerW(nullptr, TRUE, nullptr));
    LARGE_INTEGER due{};
    due.QuadPart = -static_cast<LONGLONG>(seconds * 10'000'000);
    if (timer && !SetWaitableTimer(timer.Get(), &due, 0, nullptr, nullptr, FALSE)) {
        timer.Reset();
    }
    return timer;
}

bool Expired(HANDLE timer) {
    return WaitForSingleObject(timer, 0) == WAIT_OBJECT_0;
}

std::wstring BuildMessage(const SendOptions& options, const CommandEntry& entry, const std::wstring& replyPipe) {
    CCmdProtocol message;
    message << Utf8ToWide(options.command);
    if (entry.Answers()) {
        message << replyPipe;
    }
    for (const std::string& field : options.fields) {
        message << Utf8ToWide(field);
    }
    return std::wstring(message.Text());
}

// The number of fields that follow the name, without the reply pipe; nothing when the layout is not settled.
std::optional<std::size_t> FieldCount(const CommandEntry& entry) {
    if (entry.fields == "-" || entry.fields == "none") {
        return entry.fields == "-" ? std::nullopt : std::optional<std::size_t>(0);
    }
    const auto commas = static_cast<std::size_t>(std::ranges::count(entry.fields, ','));
    return commas + (entry.Answers() ? 0 : 1);
}

// A field that is left out counts as empty: it would switch a setting off or clear a text.
std::string WrongFieldCount(const SendOptions& options, const CommandEntry& entry) {
    const std::optional<std::size_t> count = FieldCount(entry);
    if (options.raw || !entry.name.starts_with("CMDHL_SET_") || !count || options.fields.size() == *count) {
        return {};
    }
    return options.command + " has " + std::to_string(*count) + " fields, not " +
           std::to_string(options.fields.size()) + ": " + std::string(entry.fields) +
           "; fields that are left out would be cleared. 'wrbctl set' changes single settings, --raw sends it all the "
           "same";
}

// The nearest command, also for a name without its beginning.
std::string SuggestCommand(const std::string& name) {
    std::vector<std::wstring> names;
    for (const CommandEntry& entry : CommandCatalog()) {
        names.push_back(Utf8ToWide(entry.name));
    }
    const std::vector<std::wstring_view> candidates(names.begin(), names.end());
    const std::wstring_view nearest = NearestName(Utf8ToWide(name), candidates);
    return nearest.empty() ? "; 'wrbctl commands' lists them" : "; did you mean " + WideToUtf8(nearest) + "?";
}

// 0, or the exit code of a failure that has been reported.
int SendToHost(const std::wstring& message) {
    CPipeClient client;
    uint64_t bytes = message.size() * sizeof(wchar_t);
    if (!client.Initial(kHostPipe)) {
        return FailToOpen("the host is not running; start wrbhost", "cannot connect to the host", GetLastError());
    }
    if (!client.Send(message.data(), bytes)) {
        return FailSystem(kExitFailed, "cannot send to the host", GetLastError());
    }
    return kExitOk;
}

// An agent's text must not steer a terminal. Files and pipes get the answer as it is.
std::wstring ForTerminal(std::wstring_view answer) {
    std::wstring text;
    while (!answer.empty()) {
        const std::wstring_view line = answer.substr(0, answer.find(L'\n'));
        answer.remove_prefix(std::min(answer.size(), line.size() + 1));
        text += VisibleText(line.ends_with(L'\r') ? line.substr(0, line.size() - 1) : line) + L"\n";
    }
    return text;
}

void PrintAnswer(const SendOptions& options, const CommandEntry& entry, const std::wstring& answer, double ms) {
    if (!options.json) {
        const std::string text = WideToUtf8(TerminalColumns() ? ForTerminal(answer) : answer);
        PrintOut(text.ends_with('\n') ? text : text + "\n");
        return;
    }
    Json::Value result;
    result["command"] = options.command;
    result["answers"] = entry.Answers();
    if (entry.Answers()) {
        result["answer"] = WideToUtf8(answer);
        result["bytes"] = static_cast<Json::UInt64>(answer.size() * sizeof(wchar_t));
        result["milliseconds"] = ms;
    }
    PrintJson(result);
}

int Exchange(const SendOptions& options, const CommandEntry& entry) {
    const auto start = std::chrono::steady_clock::now();
    const std::wstring replyPipe = NewReplyPipe();
    const KernelHandle timer = StartTimer(options.timeoutSeconds);
    CPipeServer server;
    if (entry.Answers() && (!timer || !server.Initial(replyPipe.c_str(), timer.Get()))) {
        return FailSystem(kExitFailed, "cannot open the reply pipe", GetLastError());
    }
    if (const int code = SendToHost(BuildMessage(options, entry, replyPipe)); code != kExitOk) {
        return code;
    }
    std::wstring answer;
    if (entry.Answers() && !server.FetchCmd(answer)) {
        return Expired(timer.Get()) ? Fail(kExitTimedOut, "no answer in time")
                                    : Fail(kExitFailed, "cannot read the answer");
    }
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    PrintAnswer(options, entry, answer, elapsed.count());
    if (entry.Answers() && answer.empty()) {
        PrintErr("wrbctl: the answer is empty; 'wrbctl get UID' and 'wrbctl status' tell why\n");
    }
    return kExitOk;
}

int RunSend(const SendOptions& options) {
    const CommandEntry* const entry = FindCommand(options.command);
    if (entry == nullptr) {
        return Fail(kExitUsage, "no command " + options.command + SuggestCommand(options.command));
    }
    if (std::ranges::any_of(options.fields, [](const std::string& field) { return field.find('\t') != field.npos; })) {
        return Fail(kExitUsage, "a field cannot hold a TAB");
    }
    if (const std::string wrong = WrongFieldCount(options, *entry); !wrong.empty()) {
        return Fail(kExitUsage, wrong);
    }
    return Exchange(options, *entry);
}

}  // namespace

void AddSend(CLI::App& app, Run& run) {
    const auto options = std::make_shared<SendOptions>();
    CLI::App* const send = AddSubcommand(app, "send", "Send a command to the host and print its answer as UTF-8",
                                         kExamples, options, RunSend, run);
    send->add_option("command", options->command, "Command name, as 'wrbctl commands' lists it")->required();
    send->add_option("fields", options->fields, "Fields after the reply pipe, which wrbctl adds itself");
    AddTimeout(*send, options->timeoutSeconds);
    send->add_flag("--raw", options->raw, "Send a SET command with any number of fields");
    send->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
