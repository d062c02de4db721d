// wrbhost: loads the command library and serves its pipe.
#include <windows.h>

#include <chrono>
#include <exception>
#include <string>

#include "CommandHost.h"
#include "CommandLibrary.h"
#include "CommandLine.h"
#include "Console.h"
#include "DebugLog.h"
#include "ExitCode.h"
#include "HostSettings.h"
#include "ServerStopEvent.h"
#include "StopEvent.h"
#include "StopWatchdog.h"
#include "Text.h"

namespace wrb {
namespace {

struct Options {
    std::string dll;
    std::string debugIni;
    std::string debugLibrary;
    unsigned workers = 0;  // 0: as the scan INI says
    bool stop = false;
    unsigned timeoutSeconds = 60;
};

int Fail(const std::string& text, int code = kExitFailed) {
    PrintErr("wrbhost: " + text + "\n");
    return code;
}

// From here to Finalize the library is in use.
int ServeUntilStopped(const EntryPoints& library, const Options& options, const StopEvent& stop) {
    const unsigned workers = options.workers != 0 ? options.workers : ReadWorkerCount();
    CommandHost host(library.process, workers);
    if (!host.Start()) {
        const DWORD error = GetLastError();
        return Fail(error == ERROR_ALREADY_EXISTS
                        ? "another program serves the command pipe"
                        : "cannot create the command pipe (error " + std::to_string(error) + ")");
    }
    PrintOut("wrbhost: serving with " + std::to_string(workers) + " workers\n");
    stop.Wait();
    PrintOut("wrbhost: stopping\n");
    {
        const StopWatchdog watchdog(std::chrono::seconds(options.timeoutSeconds));
        host.Stop();
    }
    const HostCounters counters = host.Counters();
    PrintOut("wrbhost: stopped; handled " + std::to_string(counters.handled) + ", refused " +
             std::to_string(counters.refused) + ", threw " + std::to_string(counters.threw) + ", dropped " +
             std::to_string(counters.dropped) + "\n");
    return kExitOk;
}

int Host(const Options& options) {
    StopEvent stop;
    if (!stop.Create(kServerStopEvent)) {
        const DWORD error = GetLastError();
        return Fail(error == ERROR_ALREADY_EXISTS
                        ? "already running on this machine"
                        : "cannot create the stop event (error " + std::to_string(error) + ")");
    }
    CommandLibrary library;
    const std::string wrong = library.Load(options.dll.empty() ? DefaultLibraryPath() : Utf8ToWide(options.dll));
    if (!wrong.empty()) {
        return Fail(wrong);
    }
    const std::wstring debugIni = Utf8ToWide(options.debugIni);
    const std::wstring debugLibrary = Utf8ToWide(options.debugLibrary);
    DebugLogSetup(debugIni.c_str(), debugLibrary.c_str(), "WRBHOST", true);
    try {
        library.Exports().initialize(debugIni.c_str(), debugLibrary.c_str(), nullptr);  // false is not an error
    } catch (const std::exception& error) {
        return Fail(std::string("the command library does not start: ") + error.what());
    }
    if (!HasProtectionKey()) {
        PrintErr(
            "wrbhost: Private\\wrbserver.ini has no protection key: agents with addresses get no web-threat settings. "
            "Make one with: wrbctl make-key\n");
    }
    const int code = ServeUntilStopped(library.Exports(), options, stop);
    library.Exports().finalize();
    return code;
}

int Stop(const Options& options) {
    switch (StopRunning(kServerStopEvent, options.timeoutSeconds * 1000)) {
        case StopResult::Stopped:
            return kExitOk;
        case StopResult::NotRunning:
            return Fail("not running", kExitServiceNotRunning);
        case StopResult::TimedOut:
            return Fail("still running after " + std::to_string(options.timeoutSeconds) + " seconds", kExitTimedOut);
        default:
            return Fail("cannot signal the running host (error " + std::to_string(GetLastError()) + ")");
    }
}

}  // namespace
}  // namespace wrb

int main() {
    wrb::Options options;
    CLI::App app("Loads the command library and serves agents' commands on its pipe until it is stopped.", "wrbhost");
    app.add_option("--dll", options.dll, "Command library (default: libCmdHndlrClient.dll beside this program)");
    app.add_option("--workers", options.workers, "Commands served at once (default: as wrbscan.ini says, else 20)")
        ->check(CLI::Range(1u, wrb::kMostWorkers));
    app.add_option("--debug-ini", options.debugIni, "Debug INI path handed to the library");
    app.add_option("--debug-library", options.debugLibrary, "Debug library path handed to the library");
    app.add_flag("--stop", options.stop, "Stop the running host, and wait until it has gone");
    app.add_option("--timeout", options.timeoutSeconds, "Seconds that a stop may take (default: 60)")
        ->check(CLI::Range(1u, 86400u));
    app.footer(
        "Examples:\n"
        "  wrbhost                          serve until Ctrl-C or wrbhost --stop\n"
        "  wrbhost --workers 8              with eight worker threads\n"
        "  wrbhost --stop --timeout 10      stop the running host; give up after ten seconds\n"
        "\n"
        "Exit codes: 0 done, 1 failed, 2 wrong command line, 3 not running, 4 timed out");
    if (const auto code = wrb::ParseArguments(app, wrb::Utf8Arguments())) {
        return *code;
    }
    return options.stop ? wrb::Stop(options) : wrb::Host(options);
}
