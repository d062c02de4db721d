// wrbctl: shows and changes how the server is and what its agents get.
#include <exception>

#include "CommandLine.h"
#include "Commands.h"
#include "Console.h"
#include "DebugLog.h"
#include "ExitCode.h"
#include "Subcommands.h"

namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl status                              how each part of the server is
  wrbctl get UID MSCfg                       manual-scan settings of an agent
  wrbctl set UID MSCfg.ScanBoot=0            change one of them
  wrbctl audit UID                           who changed its settings
  wrbctl explain UID MSCfg.ScanBoot          where its value comes from
  wrbctl check                               mistakes in the server's files
  wrbctl send CMDHL_ECHO hello               any command, as an agent sends it
  wrbctl counters --interval 2               every two seconds, until Ctrl-C
  wrbctl load --agents 1000 --for 60         how fast simulated agents are answered
  wrbctl log-level W                         errors and warnings only
  wrbctl fwlog write fw.log < records.jsonl  a firewall log file from JSON lines
  wrbctl pack upload.cab fw.log              a package as agents upload it

Exit codes: 0 done, 1 failed, 2 wrong command line or input, 3 service not running, 4 timed out.
)";

struct Options {
    wrb::SendOptions send;
    wrb::CountersOptions counters;
    wrb::MakeKeyOptions makeKey;
    wrb::PackOptions pack;
    wrb::FwlogWriteOptions fwlogWrite;
    wrb::FwlogReadOptions fwlogRead;
    std::optional<std::string> level;
    double levelTimeout = 10;
    std::string format = "table";
    bool json = false;
};

void AddTimeout(CLI::App& app, double& seconds) {
    app.add_option("--timeout", seconds, "Seconds to wait for the server")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
}

constexpr char kSendExamples[] = R"(Examples:
  wrbctl send CMDHL_GET_MS_CFG 11111111-2222-3333-4444-555555555555
  wrbctl send CMDHL_GET_MS_CFG ""            server-wide settings
  wrbctl send CMDHL_ECHO hello --json

Exit codes: 0 done, 1 failed, 2 wrong command line or number of fields, 3 the host does not run, 4 timed out.
)";

constexpr char kLogLevelExamples[] = R"(Examples:
  wrbctl log-level
  wrbctl load --agents 1000 --for 60         how fast simulated agents are answered
  wrbctl log-level W                         errors and warnings only
)";

CLI::App* AddSend(CLI::App& app, Options& options) {
    CLI::App* const send = app.add_subcommand("send", "Send a command to the host and print its answer as UTF-8");
    send->add_option("command", options.send.command, "Command name, as 'wrbctl commands' lists it")->required();
    send->add_option("fields", options.send.fields, "Fields after the reply pipe, which wrbctl adds itself");
    AddTimeout(*send, options.send.timeoutSeconds);
    send->add_flag("--raw", options.send.raw, "Send a SET command with any number of fields");
    send->add_flag("--json", options.json, "Print a JSON object");
    send->footer(kSendExamples);
    return send;
}

constexpr char kCountersExamples[] = R"(Examples:
  wrbctl counters                            since the start of the server
  wrbctl counters --interval 2               then what is new, every two seconds, until Ctrl-C
  wrbctl counters --interval 10 --times 6 --json > minute.jsonl
  wrbctl counters --format prometheus > warrenby.prom

Exit codes: 0 done, 1 failed, 2 wrong command line, 3 nobody counts.
)";

CLI::App* AddCounters(CLI::App& app, Options& options) {
    CLI::App* const counters =
        app.add_subcommand("counters", "Show calls and run times of each command, from shared memory");
    counters->add_flag("--all", options.counters.all, "Also commands that were never called");
    CLI::Option* const interval =
        counters->add_option("--interval", options.counters.interval, "Read again after this many seconds");
    interval->check(CLI::Range(0.1, 86400.0));
    counters->add_option("--times", options.counters.times, "Number of reads (default: until Ctrl-C)")->needs(interval);
    counters->add_option("--format", options.format, "table; json, an object a line; or prometheus")
        ->check(CLI::IsMember({"table", "json", "prometheus"}));
    counters->add_flag("--json", options.json, "The same as --format json");
    counters->footer(kCountersExamples);
    return counters;
}

CLI::App* AddLogLevel(CLI::App& app, Options& options) {
    CLI::App* const level =
        app.add_subcommand("log-level", "Show the debug log's filter, or make the log service change it");
    level->add_option("level", options.level, "F, E, W, I or D: lines up to that level are written; all or none");
    AddTimeout(*level, options.levelTimeout);
    level->add_flag("--json", options.json, "Print a JSON object");
    level->footer(kLogLevelExamples);
    return level;
}

constexpr char kMakeKeyExamples[] = R"(Examples:
  wrbctl make-key                            in the server's home folder
  wrbctl make-key --ini D:\new\wrbserver.ini

Exit codes: 0 done, 1 there is a key already, or the file cannot be written, 2 wrong command line.
)";

CLI::App* AddMakeKey(CLI::App& app, Options& options) {
    CLI::App* const makeKey = app.add_subcommand(
        "make-key", "Write a new protection key into the server INI; agents need the same to read web-threat settings");
    makeKey->add_option("--ini", options.makeKey.ini,
                        "Server INI (default: Private\\wrbserver.ini in the home folder)");
    makeKey->add_flag("--force", options.makeKey.force, "Replace the key that is there");
    makeKey->footer(kMakeKeyExamples);
    return makeKey;
}

CLI::App* AddProtect(CLI::App& app) {
    return app.add_subcommand(
        "protect", "Print the first line of the standard input protected with the server's key, for an INI file");
}

constexpr char kPackExamples[] = R"(Example:
  wrbctl pack upload.cab fw1.log fw2.log

Exit codes: 0 done, 1 cannot make the package, 2 wrong command line or no such file.
)";

CLI::App* AddPack(CLI::App& app, Options& options) {
    CLI::App* const pack = app.add_subcommand("pack", "Make a package (a cabinet) as agents upload it");
    pack->add_option("package", options.pack.package, "File to make; an existing one is replaced")->required();
    pack->add_option("files", options.pack.files, "Files to pack, under their names without folders")->required();
    pack->footer(kPackExamples);
    return pack;
}

constexpr char kFwlogExamples[] = R"(Examples:
  wrbctl fwlog write fw.log < records.jsonl
  wrbctl fwlog write --version 0 old.log < records.jsonl
  wrbctl fwlog read fw.log
  wrbctl fwlog read fw.log --json | wrbctl fwlog write copy.log

A line of records.jsonl:
  {"time":1700000000,"port":443,"localHost":"10.0.0.5","path":"C:\\a.exe"}

Exit codes: 0 done, 1 cannot write, or records with wrong markers were read, 2 wrong command line or input.
)";

CLI::App* AddFwlog(CLI::App& app, Options& options) {
    CLI::App* const fwlog = app.add_subcommand("fwlog", "Write and read firewall log files");
    fwlog->require_subcommand(1);
    fwlog->footer(kFwlogExamples);
    CLI::App* const write = fwlog->add_subcommand("write", "Make a file from JSON lines on the standard input");
    write
        ->add_option("--version", options.fwlogWrite.version,
                     "Version of the records (default: that of the first, or 1)")
        ->check(CLI::Range(0u, 1u));
    write->add_option("out", options.fwlogWrite.out, "File to make")->required();
    CLI::App* const read = fwlog->add_subcommand("read", "Show the records of a file");
    read->add_option("file", options.fwlogRead.file, "Firewall log file of either version")->required();
    read->add_flag("--json", options.fwlogRead.json, "Print JSON lines, as write takes them");
    return fwlog;
}

int RunFwlog(const CLI::App& fwlog, const Options& options) {
    return fwlog.got_subcommand("write") ? wrb::RunFwlogWrite(options.fwlogWrite)
                                         : wrb::RunFwlogRead(options.fwlogRead);
}

int Run() {
    CLI::App app{"Client of the Warrenby command handler", "wrbctl"};
    app.require_subcommand(1);
    app.footer(kExamples);
    Options options;
    wrb::Run run;
    for (const auto add : {wrb::AddStatus, wrb::AddGet, wrb::AddSet, wrb::AddAudit, wrb::AddExplain, wrb::AddDiff,
                           wrb::AddCheck, wrb::AddUpload, wrb::AddFault, wrb::AddTail, wrb::AddTrace, wrb::AddLoad,
                           wrb::AddRecord, wrb::AddReplay, wrb::AddDecode, wrb::AddDiagnostics, wrb::AddCompletion}) {
        add(app, run);
    }
    CLI::App* const send = AddSend(app, options);
    CLI::App* const commands = app.add_subcommand("commands", "List the 72 commands");
    commands->add_flag("--json", options.json, "Print a JSON array");
    CLI::App* const counters = AddCounters(app, options);
    AddLogLevel(app, options);
    CLI::App* const makeKey = AddMakeKey(app, options);
    CLI::App* const protect = AddProtect(app);
    CLI::App* const pack = AddPack(app, options);
    CLI::App* const fwlog = AddFwlog(app, options);
    if (const auto code = wrb::ParseArguments(app, wrb::Utf8Arguments())) {
        return *code;
    }
    if (run) {
        return run();
    }
    options.send.json = options.json;
    options.counters.format = options.json || options.format == "json" ? wrb::CounterFormat::Json
                              : options.format == "prometheus"         ? wrb::CounterFormat::Prometheus
                                                                       : wrb::CounterFormat::Table;
    if (*send) {
        return wrb::RunSend(options.send);
    }
    if (*commands) {
        return wrb::RunCommands(options.json);
    }
    if (*makeKey) {
        return wrb::RunMakeKey(options.makeKey);
    }
    if (*protect) {
        return wrb::RunProtect();
    }
    if (*pack) {
        return wrb::RunPack(options.pack);
    }
    if (*fwlog) {
        return RunFwlog(*fwlog, options);
    }
    return *counters ? wrb::RunCounters(options.counters)
                     : wrb::RunLogLevel(options.level, options.levelTimeout, options.json);
}

}  // namespace

int main() {
    try {
        DebugLogSetup(L"", L"", "WRBCTL", true);
        return Run();
    } catch (const std::exception& error) {
        wrb::PrintErr(std::string("wrbctl: ") + error.what() + "\n");
        return wrb::kExitFailed;
    }
}
