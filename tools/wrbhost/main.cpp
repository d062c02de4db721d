// wrbhost: loads the command library and serves its pipe.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <string>

#include "BackEndWatch.h"
#include "CommandHost.h"
#include "CommandLibrary.h"
#include "CommandLine.h"
#include "Console.h"
#include "ConsoleQueue.h"
#include "CounterSampling.h"
#include "DebugLog.h"
#include "EventMessages.h"
#include "ExitCode.h"
#include "HomeFolder.h"
#include "HostBoard.h"
#include "HostSettings.h"
#include "MailDelivery.h"
#include "MailFolder.h"
#include "PerformanceMonitor.h"
#include "ServerStopEvent.h"
#include "ServiceCommand.h"
#include "ServicePipes.h"
#include "Stage.h"
#include "StopEvent.h"
#include "StopWatchdog.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kBoard[] = L"Calloway_Warrenby_Host_Board";

struct Options {
    std::string dll;
    std::string debugIni;
    std::string debugLibrary;
    HostOptions host;
    bool performanceMonitor = false;
    bool stop = false;
    bool status = false;
    std::optional<unsigned> timeoutSeconds;
};

int Fail(const std::string& text, int code = kExitFailed) {
    PrintErr("wrbhost: " + text + "\n");
    return code;
}

BackEndWatch::Listener TellOfBackEnd(const Stage& stage) {
    return {[&stage] { stage.Tell(WRB_EVENT_BACK_END_LOST, {kDbServerPipe}); },
            [&stage](unsigned seconds) { stage.Tell(WRB_EVENT_BACK_END_FOUND, {std::to_wstring(seconds)}); }};
}

int Serve(const EntryPoints& library, const Options& options, const CommandHostOptions& settings, const StopEvent& stop,
          HostBoard& board, ConsoleQueue& console, const Stage& stage) {
    const std::wstring home = HomeFolder();
    MailFolder(home).DeleteUnfinished();  // before a command can store a mail
    CommandHost host(library.process, settings, board, console);
    if (!host.Start()) {
        const DWORD error = GetLastError();
        library.finalize();
        return stage.RefuseAtPipe("command pipe", error);
    }
    MailDelivery mail(home);
    mail.Start();
    CounterSampling sampling;
    sampling.Start();
    PerformanceMonitor monitor;
    if (const DWORD error = options.performanceMonitor ? monitor.Publish() : ERROR_SUCCESS; error != ERROR_SUCCESS) {
        console.Err("the performance monitor does not show the counters: " + SystemText(error));
    }
    BackEndWatch backEnd(TellOfBackEnd(stage));
    backEnd.Start();
    stage.Serving("serving with " + std::to_string(settings.lanes.workers) + " workers");
    stop.Wait();
    const auto limit = stop.Limit(std::chrono::seconds(options.timeoutSeconds.value_or(kStopSeconds)));
    const StopWatchdog watchdog(stop, console, limit,
                                [&] { return stage.GaveUp("a command is still running; giving up; " + board.Text()); });
    stage.Stopping();
    backEnd.Stop();
    mail.Stop();  // first: then the commands have nearly all of the time
    host.Stop(limit);
    library.finalize();
    stage.Stopped(board.Text());
    console.Drain(std::min(limit / 4, ConsoleQueue::kPatience));
    return kExitOk;
}

int Host(const Options& options, ConsoleQueue& console, const Stage& stage) {
    StopEvent stop;
    if (!stop.Create(kServerStopEvent)) {
        return stage.RefuseAtStopEvent(GetLastError());
    }
    SharedHostBoard board;
    if (!board.Create(kBoard)) {
        const DWORD error = GetLastError();
        return stage.Refuse(StartFault::System, "cannot create the section of the counters: " + SystemText(error),
                            kExitFailed);
    }
    CommandHostOptions settings;
    if (const std::string wrong = ReadHostSettings(options.host, settings); !wrong.empty()) {
        return stage.Refuse(StartFault::Settings, wrong, kExitUsage);
    }
    CommandLibrary library;
    const std::string wrong = library.Load(options.dll.empty() ? DefaultLibraryPath() : Utf8ToWide(options.dll));
    if (!wrong.empty()) {
        return stage.Refuse(StartFault::Library, wrong, kExitFailed);
    }
    const std::wstring debugIni = Utf8ToWide(options.debugIni);
    const std::wstring debugLibrary = Utf8ToWide(options.debugLibrary);
    DebugLogSetup(debugIni.c_str(), debugLibrary.c_str(), "WRBHOST", true);
    try {
        library.Exports().initialize(debugIni.c_str(), debugLibrary.c_str(), nullptr);  // false is not an error
    } catch (const std::exception& error) {
        return stage.Refuse(StartFault::Library, std::string("the command library does not start: ") + error.what(),
                            kExitFailed);
    }
    if (!HasProtectionKey()) {
        console.Err(
            "Private\\wrbserver.ini has no protection key: agents with addresses get no web-threat settings. "
            "Make one with: wrbctl make-key");
    }
    return Serve(library.Exports(), options, settings, stop, *board, console, stage);
}

// On a console, or as a service.
int Run(const Options& options) {
    ConsoleQueue console(kHostService.program);
    const Stage stage(kHostService, console);
    stage.DumpOnCrash();
    try {
        return Host(options, console, stage);
    } catch (const std::exception& error) {
        return stage.Refuse(StartFault::System, error.what(), kExitFailed);
    }
}

int Stop(const Options& options) {
    SharedHostBoard board;
    board.Open(kBoard);
    switch (StopRunning(kServerStopEvent, options.timeoutSeconds)) {
        case StopResult::Stopped:
            return kExitOk;
        case StopResult::NotRunning:
            return Fail("not running", kExitServiceNotRunning);
        case StopResult::TimedOut:
            return Fail(
                "still running after " + std::to_string(options.timeoutSeconds.value_or(kStopSeconds)) + " seconds",
                kExitTimedOut);
        case StopResult::GaveUp:
            return Fail("the host has ended with commands running" + (board ? "; " + board->Text() : std::string()),
                        kExitTimedOut);
        default:
            return Fail("cannot signal the running host: " + SystemText(GetLastError()));
    }
}

int Status() {
    SharedHostBoard board;
    if (!board.Open(kBoard)) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND ? Fail("not running", kExitServiceNotRunning)
                                             : Fail("cannot read the running host's counters: " + SystemText(error));
    }
    PrintOut("wrbhost: running; " + board->Text() + "\n");
    return kExitOk;
}

void AddServeOptions(CLI::App& app, Options& options) {
    app.add_option("--dll", options.dll, "Command library (default: libCmdHndlrClient.dll beside this program)");
    app.add_option("--workers", options.host.workers, "Commands served at once (default: as wrbscan.ini says, else 20)")
        ->check(CLI::Range(1u, kMostWorkers));
    app.add_option("--connections", options.host.connections, "Connections read at once (128)")
        ->check(CLI::Range(1u, kMostConnections));
    app.add_option("--queue", options.host.queue, "Commands of one lane that may wait for a worker (1000)")
        ->check(CLI::Range(1u, kMostQueued));
    app.add_option("--memory", options.host.memoryMiB, "MiB that long messages may take together (64)")
        ->check(CLI::Range(1u, kMostMemoryMiB));
    app.add_option("--allow", options.host.allowed, "SID or name of an account that may send commands; repeatable")
        ->allow_extra_args(false);
    app.add_flag("--performance-monitor", options.performanceMonitor,
                 "Show the command counters in the Windows performance monitor, where their manifest is registered");
    app.add_option("--debug-ini", options.debugIni, "Debug INI path handed to the library");
    app.add_option("--debug-library", options.debugLibrary, "Debug library path handed to the library");
}

int Main() {
    Options options;
    CLI::App app("Loads the command library and serves agents' commands on its pipe until it is stopped.", "wrbhost");
    AddServeOptions(app, options);
    const ServiceCommand service(app, kHostService, [&](CLI::App& command) { AddServeOptions(command, options); });
    app.add_flag("--stop", options.stop, "Stop the running host, and wait until it has gone");
    app.add_flag("--status", options.status, "Show the running host's counters");
    app.add_option("--timeout", options.timeoutSeconds, "Seconds that a stop may take (default: 60)")
        ->check(CLI::Range(1u, 86400u));
    app.footer(
        "Examples:\n"
        "  wrbhost                          serve until Ctrl-C or wrbhost --stop\n"
        "  wrbhost --workers 8              with eight worker threads\n"
        "  wrbhost --allow \"IIS APPPOOL\\Agents\"  admit the account of a gateway program\n"
        "  wrbhost --stop --timeout 10      stop the running host; after ten seconds it ends with commands running\n"
        "  wrbhost service install          as a Windows service\n"
        "\n"
        "Exit codes: 0 done, 1 failed, 2 wrong command line, 3 not running, 4 timed out");
    if (const auto code = ParseArguments(app, Utf8Arguments())) {
        return *code;
    }
    if (service.IsAsked()) {
        return service.Run([&] { return Run(options); });
    }
    if (options.status) {
        return Status();
    }
    return options.stop ? Stop(options) : Run(options);
}

}  // namespace
}  // namespace wrb

int main() {
    try {
        return wrb::Main();
    } catch (const std::exception& error) {
        return wrb::Fail(error.what());
    }
}
