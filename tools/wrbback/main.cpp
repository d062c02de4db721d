// wrbback: the reference back end. One program, one database file: database server and log service.
#include <windows.h>

#include <exception>

#include "CommandLine.h"
#include "Commands.h"
#include "Console.h"
#include "ExitCode.h"
#include "StopEvent.h"

namespace wrb {

int Fail(const std::string& text, int code) {
    PrintErr("wrbback: " + text + "\n");
    return code;
}

int Stop(unsigned timeoutSeconds) {
    switch (StopRunning(kBackEndStopEvent, timeoutSeconds * 1000)) {
        case StopResult::Stopped:
            return kExitOk;
        case StopResult::NotRunning:
            return Fail("not running", kExitServiceNotRunning);
        case StopResult::TimedOut:
            return Fail("still running after " + std::to_string(timeoutSeconds) + " seconds", kExitTimedOut);
        default:
            return Fail("cannot signal the running program (error " + std::to_string(GetLastError()) + ")",
                        kExitFailed);
    }
}

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  wrbback seed samples/agents.json --db agents.db       make or update a database from a file\n"
    "  wrbback serve --db agents.db --log-folder log         serve it until Ctrl-C or wrbback stop\n"
    "  wrbback serve --db agents.db --log-level W --split-size 1000000 --max-logs 5\n"
    "  wrbback stop --timeout 10                             stop the running program; give up after ten seconds\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line or seed file, 3 not running, 4 timed out";

void AddServe(CLI::App& app, ServeOptions& options) {
    CLI::App* serve = app.add_subcommand("serve", "Run the database server and the log service until they are stopped");
    serve->add_option("--db", options.database, "Database file, made by wrbback seed")->required();
    serve->add_option("--workers", options.workers, "Questions answered at once (default: 8)")
        ->check(CLI::Range(1u, 64u));
    serve->add_option("--debug-ini", options.debugIni, "INI file with the log settings, section Debug");
    serve->add_option("--log-folder", options.logFolder, "Folder of the log files (default: .\\Log\\)");
    serve->add_option("--log-level", options.logLevel, "Lines wanted: F, E, W, I, D, all (default) or none");
    serve->add_option("--split-size", options.splitBytes, "Bytes after which a new log file begins; 0: never");
    serve->add_option("--max-logs", options.maxLogs, "Log files that are kept, the current one included; 0: all");
}

int Main() {
    CLI::App app("The reference back end: database server and log service over one SQLite file.", "wrbback");
    app.require_subcommand(1);
    app.footer(kFooter);
    ServeOptions serveOptions;
    AddServe(app, serveOptions);
    std::string file;
    std::string database;
    CLI::App* seed = app.add_subcommand("seed", "Store the agents of a JSON file");
    seed->add_option("FILE", file, "JSON file, UTF-8")->required();
    seed->add_option("--db", database, "Database file; made when there is none")->required();
    unsigned timeoutSeconds = 60;
    CLI::App* stop = app.add_subcommand("stop", "Stop the running program, and wait until it has gone");
    stop->add_option("--timeout", timeoutSeconds, "Seconds to wait (default: 60)")->check(CLI::Range(1u, 86400u));

    if (const auto code = ParseArguments(app, Utf8Arguments())) {
        return *code;
    }
    if (app.got_subcommand(seed)) {
        return Seed(file, database);
    }
    return app.got_subcommand(stop) ? Stop(timeoutSeconds) : Serve(serveOptions);
}

}  // namespace
}  // namespace wrb

int main() {
    try {
        return wrb::Main();
    } catch (const std::exception& error) {
        return wrb::Fail(error.what(), wrb::kExitFailed);
    }
}
