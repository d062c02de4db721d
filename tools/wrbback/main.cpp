// wrbback: the reference back end. One program and one database file for all services that the command library uses.
#include <windows.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "Console.h"
#include "ExitCode.h"
#include "ServiceCommand.h"
#include "StopEvent.h"
#include "SystemText.h"

namespace wrb {

int Fail(const std::string& text, int code) {
    PrintErr("wrbback: " + text + "\n");
    return code;
}

int Stop(std::optional<unsigned> timeoutSeconds) {
    switch (StopRunning(kBackEndStopEvent, timeoutSeconds)) {
        case StopResult::Stopped:
            return kExitOk;
        case StopResult::NotRunning:
            return Fail("not running", kExitServiceNotRunning);
        case StopResult::TimedOut:
            return Fail("still running after " + std::to_string(timeoutSeconds.value_or(kStopSeconds)) + " seconds",
                        kExitTimedOut);
        case StopResult::GaveUp:
            return Fail("the program has ended before it had finished", kExitTimedOut);
        default:
            return Fail("cannot signal the running program: " + SystemText(GetLastError()), kExitFailed);
    }
}

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  wrbback seed samples/agents.json --db agents.db       make or update a database from a file\n"
    "  wrbback serve --db agents.db --log-folder log         serve it until Ctrl-C or wrbback stop\n"
    "  wrbback serve --db agents.db --log-level W --split-size 1000000 --max-logs 5\n"
    "  wrbback log-pool --db agents.db --table TBL_CFW_LOG   the latest firewall-log rows, also while it serves\n"
    "  wrbback log-pool --uid UID                            rows of one agent\n"
    "  wrbback events --limit 0 --json                       every event in agents.db, for a program\n"
    "  wrbback agents --filter reception                     agents with that text in a column\n"
    "  wrbback backup copy.db                                copy of agents.db, also while it is served\n"
    "  wrbback stop --timeout 10                             stop the running program; it ends after ten seconds\n"
    "  wrbback service install                               as a Windows service\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line, store, log setting or seed file, 3 not running, 4 timed out";

void AddStore(CLI::App* command, std::string& store) {
    // The variable is read by StoreOf: CLI11 would let it replace an option that several subcommands share.
    command->add_option("--store,--db", store,
                        "Database: sqlite:FILE, odbc:CONNECTION STRING or a file. Default: the variable WRB_STORE, "
                        "which shows no password on the command line; else BackEndStore of Private\\wrbserver.ini; "
                        "else agents.db");
}

void AddServeOptions(CLI::App* serve, ServeOptions& options) {
    serve->add_option("--connections", options.connections, "Connections for reads (default: two for each processor)")
        ->check(CLI::Range(1u, 64u));
    serve->add_option("--workers", options.workers, "Questions answered at once (default: 8)")
        ->check(CLI::Range(1u, 64u));
    serve->add_option("--allow", options.allowed, "SID or name of an account that may connect; repeatable")
        ->allow_extra_args(false);
    serve->add_option("--debug-ini", options.debugIni, "INI file with the log settings, section Debug");
    serve->add_option("--log-folder", options.logFolder, "Folder of the log files (default: .\\Log\\)");
    serve->add_option("--log-level", options.logLevel, "Lines wanted: F, E, W, I, D, all (default) or none");
    serve->add_option("--split-size", options.splitBytes, "Bytes after which a new log file begins; 0: never")
        ->check(CLI::Range(uint64_t{0}, uint64_t{1} << 40));
    serve->add_option("--max-logs", options.maxLogs, "Log files that are kept, the current one included; 0: all")
        ->check(CLI::Range(0u, 999'999u));
    serve->add_option("--max-rows", options.maxRows, "Rows kept of each log-pool and event table (1000000); 0: all")
        ->check(CLI::Range(int64_t{0}, int64_t{1} << 40));
    CLI::Option* const allow =
        serve->add_flag("--allow-faults", options.allowFaults, "Let wrbctl fault spoil answers, for tests");
    serve->add_option("--fault", options.faults, "COMMAND:KIND[=TIME][:every=N], as wrbctl fault takes it; repeatable")
        ->allow_extra_args(false)
        ->needs(allow);
}

void AddServe(CLI::App& app, ServeOptions& options) {
    CLI::App* serve = app.add_subcommand("serve", "Run all services until they are stopped");
    AddStore(serve, options.database);
    AddServeOptions(serve, options);
}

CLI::App* AddShow(CLI::App& app, const char* name, const char* description, ShowOptions& options) {
    CLI::App* show = app.add_subcommand(name, description);
    AddStore(show, options.database);
    show->add_option("--limit", options.limit, "Latest rows of a table that are shown (default: 100); 0: all")
        ->check(CLI::Range(uint64_t{0}, uint64_t{1} << 40));
    show->add_flag("--json", options.json, "As JSON");
    return show;
}

// A subcommand and what runs it.
using Command = std::pair<CLI::App*, std::function<int()>>;

struct Options {
    ServeOptions serve;
    ShowOptions show;
    std::string store;
    std::string file;
    std::string filter;
    bool json = false;
    std::optional<unsigned> timeoutSeconds;
};

std::vector<Command> AddRecordCommands(CLI::App& app, Options& options) {
    CLI::App* logPool = AddShow(app, "log-pool", "Show the log rows that were received", options.show);
    logPool->add_option("--uid", options.show.uid, "Rows of this agent only");
    logPool->add_option("--table", options.show.table, "This table only")
        ->check(CLI::IsMember({"TBL_CFW_LOG", "TBL_RESTORE_LOG"}));
    CLI::App* events = AddShow(app, "events", "Show the messages to the other services", options.show);
    return {{logPool, [&options] { return ShowLogPool(options.show); }},
            {events, [&options] { return ShowEvents(options.show); }}};
}

std::vector<Command> AddStoreCommands(CLI::App& app, Options& options) {
    CLI::App* seed = app.add_subcommand("seed", "Store the agents of a JSON file");
    seed->add_option("FILE", options.file, "JSON file, UTF-8")->required();
    CLI::App* agents = app.add_subcommand("agents", "List the agents");
    agents->add_option("--filter", options.filter, "Only those with this text in a column");
    agents->add_flag("--json", options.json, "As JSON");
    CLI::App* exported = app.add_subcommand("export", "Print the agents as a file that seed reads");
    CLI::App* backup = app.add_subcommand("backup", "Copy a SQLite file, also while it is served");
    backup->add_option("FILE", options.file, "The copy; must not exist")->required();
    CLI::App* check = app.add_subcommand("check", "Look for damage and for rows without their agent");
    for (CLI::App* command : {seed, agents, exported, backup, check}) {
        AddStore(command, options.store);
    }
    return {{seed, [&options] { return Seed(options.file, options.store); }},
            {agents, [&options] { return ShowAgents(options.store, options.filter, options.json); }},
            {exported, [&options] { return Export(options.store); }},
            {backup, [&options] { return Backup(options.store, options.file); }},
            {check, [&options] { return Check(options.store); }}};
}

int Main() {
    CLI::App app("The reference back end: the services that the command library calls, over one database.", "wrbback");
    app.require_subcommand(1);
    app.footer(kFooter);
    Options options;
    AddServe(app, options.serve);
    std::vector<Command> commands = AddStoreCommands(app, options);
    std::ranges::move(AddRecordCommands(app, options), std::back_inserter(commands));
    CLI::App* stop = app.add_subcommand("stop", "Stop the running program, and wait until it has ended");
    stop->add_option("--timeout", options.timeoutSeconds, "Seconds that the stop may take (default: 60 to wait)")
        ->check(CLI::Range(1u, 86400u));
    commands.emplace_back(stop, [&options] { return Stop(options.timeoutSeconds); });
    const ServiceCommand service(app, kBackEndService,
                                 [&](CLI::App& command) { AddServeOptions(&command, options.serve); });

    if (const auto code = ParseArguments(app, Utf8Arguments())) {
        return *code;
    }
    if (service.IsAsked()) {
        options.serve.database = StoreOfService();
        return service.Run([&] { return Serve(options.serve); }, SettleServiceStore);
    }
    if (!app.got_subcommand(stop)) {  // which needs none
        for (std::string* store : {&options.store, &options.serve.database, &options.show.database}) {
            *store = StoreOf(*store);
        }
    }
    for (const auto& [command, run] : commands) {
        if (app.got_subcommand(command)) {
            return run();
        }
    }
    return Serve(options.serve);
}

}  // namespace
}  // namespace wrb

int main() {
    try {
        return wrb::Main();
    } catch (const std::invalid_argument& error) {  // a store that makes no sense
        return wrb::Fail(error.what(), wrb::kExitUsage);
    } catch (const std::exception& error) {
        return wrb::Fail(error.what(), wrb::kExitFailed);
    }
}
