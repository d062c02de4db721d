// wrbctl: shows and changes how the server is and what its agents get.
#include <exception>

#include "CommandLine.h"
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

// In the order in which --help shows them.
constexpr void (*kSubcommands[])(CLI::App& app, wrb::Run& run) = {
    wrb::AddStatus,   wrb::AddGet,    wrb::AddExplain,     wrb::AddSet,      wrb::AddDiff,
    wrb::AddAudit,    wrb::AddCheck,  wrb::AddDiagnostics, wrb::AddSend,     wrb::AddCommands,
    wrb::AddCounters, wrb::AddTail,   wrb::AddTrace,       wrb::AddLogLevel, wrb::AddLoad,
    wrb::AddFault,    wrb::AddRecord, wrb::AddReplay,      wrb::AddDecode,   wrb::AddMakeKey,
    wrb::AddProtect,  wrb::AddPack,   wrb::AddFwlog,       wrb::AddUpload,   wrb::AddCompletion,
};

int Run() {
    CLI::App app{"Client of the Warrenby command handler", "wrbctl"};
    app.require_subcommand(1);
    app.footer(kExamples);
    wrb::Run run;
    for (const auto add : kSubcommands) {
        add(app, run);
    }
    const auto code = wrb::ParseArguments(app, wrb::Utf8Arguments());
    return code ? *code : run();
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
