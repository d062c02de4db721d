#include <windows.h>

#include <algorithm>
#include <chrono>

#include "AccessList.h"
#include "Commands.h"
#include "ConsoleQueue.h"
#include "DbServer.h"
#include "DebugLog.h"
#include "EventMessages.h"
#include "ExitCode.h"
#include "FaultBoard.h"
#include "LogFiles.h"
#include "LogLevel.h"
#include "LogServer.h"
#include "LogSettings.h"
#include "Notes.h"
#include "RecordServer.h"
#include "SqlAddress.h"
#include "Stage.h"
#include "StopEvent.h"
#include "StopWatchdog.h"
#include "Store.h"
#include "SystemText.h"
#include "Tally.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

// Longer than the minute for which a stop tries to store what it has received.
constexpr std::chrono::seconds kStopLimit{120};

// Empty, or a description of the error.
std::string Settle(const ServeOptions& options, LogSettings& settings) {
    if (const std::wstring wrong = ReadLogSettings(Utf8ToWide(options.debugIni), settings); !wrong.empty()) {
        return WideToUtf8(VisibleText(wrong));
    }
    if (options.logFolder) {
        settings.files.folder = Utf8ToWide(*options.logFolder);
    }
    if (options.logLevel) {
        settings.level = Utf8ToWide(*options.logLevel);
        if (FindLogLevel(*options.logLevel) == nullptr) {
            return "no log level " + *options.logLevel + "; take F, E, W, I, D, all or none";
        }
    }
    settings.files.splitBytes = options.splitBytes.value_or(settings.files.splitBytes);
    settings.files.maxFiles = options.maxLogs.value_or(settings.files.maxFiles);
    std::vector<std::wstring> accounts;
    for (const std::string& account : options.allowed) {
        accounts.push_back(Utf8ToWide(account));
    }
    if (const auto unknown = AddAccountSids(accounts, settings.allowed)) {
        return "no such account: " + WideToUtf8(*unknown);
    }
    return {};
}

std::string CountersText(const DbServerCounters& db, const RecordServerCounters& records,
                         const LogServerCounters& log) {
    return "database: " + std::to_string(db.reads) + " reads, " + std::to_string(db.writes) + " writes, " +
           std::to_string(db.badRequests) + " refused, " + std::to_string(db.failed) +
           " failed; records: " + std::to_string(records.stored) + " stored, " + std::to_string(records.badMessages) +
           " refused, " + std::to_string(records.lost) + " lost; log: " + std::to_string(log.lines) + " lines, " +
           std::to_string(log.badMessages) + " refused, " + std::to_string(log.lost) + " lost";
}

// Empty, or a description of the error. Nothing is made unless faults are allowed.
std::string SettleFaults(const ServeOptions& options, SharedFaultBoard& board, ConsoleQueue& console) {
    if (!options.allowFaults) {
        return {};
    }
    if (!board.Create(kFaultBoard)) {
        return "cannot create the section of the faults: " + SystemText(GetLastError());
    }
    console.Err("FAULTS ARE ALLOWED: answers can be delayed, spoilt and left out");
    for (const std::string& text : options.faults) {
        const FaultRule rule = ParseFaultRule(text);
        if (!board->Set(rule)) {
            return "too many faults";
        }
        console.Err("FAULT " + FaultText(rule));
    }
    return {};
}

// Starts and stops all services. The log service starts first and stops last, so that it gets every line.
int RunServices(const ServeOptions& options, const LogSettings& settings, const StopEvent& stop, FaultBoard* faults,
                ConsoleQueue& console, const Stage& stage) {
    Notes screen([&console](const std::wstring& note) { console.Err(WideToUtf8(VisibleText(note))); });
    LogServer log(settings, [&screen](const std::wstring& note) { screen.Write(note); });
    const auto write = [&](wchar_t level, const std::wstring& note) {
        console.Err(WideToUtf8(VisibleText(note)));
        log.WriteOwn(level, note);
    };
    Notes notes([&write](const std::wstring& note) { write(kLogWarning, note); });
    DbServer db({.database = Utf8ToWide(options.database),
                 .workers = options.workers,
                 .connections = options.connections,
                 .answer = {},
                 .note = [&notes](const std::wstring& note) { notes.Write(note); },
                 .allowed = settings.allowed,
                 .faults = faults});
    RecordServer records({.database = Utf8ToWide(options.database),
                          .keep = options.maxRows,
                          .note = [&notes](const std::wstring& note) { notes.Write(note); },
                          .allowed = settings.allowed,
                          .alarm = [&write](const std::wstring& note) { write(kLogError, note); }});
    if (!log.Start()) {
        return stage.RefuseAtPipe("log service's pipe", GetLastError());
    }
    if (!db.Start()) {
        return stage.RefuseAtPipe("database server's pipe", GetLastError());
    }
    if (const wchar_t* pipe = records.Start()) {
        const DWORD error = GetLastError();
        return stage.RefuseAtPipe("pipe " + WideToUtf8(pipe), error);
    }
    stage.Serving("ready");
    stop.Wait();
    const auto limit = stop.Limit(kStopLimit);
    const auto lastWords = [&] {
        Tally lost = db.Waiting();
        lost.merge(records.Waiting());
        return stage.GaveUp("a service is still busy; giving up; not known to be stored: " +
                            (lost.empty() ? "nothing" : WideToUtf8(TallyText(lost))) + "; " +
                            CountersText(db.Counters(), records.Counters(), log.Counters()));
    };
    const StopWatchdog watchdog(stop, console, limit, lastWords);
    stage.Stopping();
    records.Stop();
    db.Stop();
    log.Stop();
    stage.Stopped(CountersText(db.Counters(), records.Counters(), log.Counters()));
    console.Drain(std::min(limit / 4, ConsoleQueue::kPatience));
    return kExitOk;
}

// An older store is brought forward before anybody uses it.
void Migrate(const ServeOptions& options, ConsoleQueue& console, const Stage& stage) {
    const std::wstring address = Utf8ToWide(options.database);
    if (const SqlAddress store = ParseSqlAddress(address); store.isOdbc) {
        console.Out("connecting to " + store.name);
    }
    if (const auto migration = MigrateStore(address)) {
        stage.Tell(WRB_EVENT_STORE_MIGRATED, {Utf8ToWide(ParseSqlAddress(address).name),
                                              std::to_wstring(migration->from), std::to_wstring(migration->to)});
    }
}

int Serve(const ServeOptions& options, ConsoleQueue& console, const Stage& stage) {
    LogSettings settings;
    if (const std::string wrong = Settle(options, settings); !wrong.empty()) {
        return stage.Refuse(StartFault::Settings, wrong, kExitUsage);
    }
    StopEvent stop;
    if (!stop.Create(kBackEndStopEvent)) {
        return stage.RefuseAtStopEvent(GetLastError());
    }
    if (settings.enabled && LogFiles(settings.files).Write("") == LogWriteResult::Failed) {
        const DWORD error = GetLastError();
        return stage.Refuse(
            StartFault::LogFolder,
            "no log can be written to the folder " + WideToUtf8(settings.files.folder) + ": " + SystemText(error),
            kExitFailed);
    }
    SharedFaultBoard faults;
    try {
        if (const std::string wrong = SettleFaults(options, faults, console); !wrong.empty()) {
            return stage.Refuse(StartFault::System, wrong, kExitFailed);
        }
        Migrate(options, console, stage);
        return RunServices(options, settings, stop, faults ? &*faults : nullptr, console, stage);
    } catch (const std::invalid_argument& error) {
        return stage.Refuse(StartFault::Settings, error.what(), kExitUsage);
    } catch (const SqlError& error) {
        return stage.Refuse(StartFault::Store, error.what(), kExitFailed);
    }
}

}  // namespace

int Serve(const ServeOptions& options) {
    ConsoleQueue console(kBackEndService.program);
    const Stage stage(kBackEndService, console);
    stage.DumpOnCrash();
    try {
        return Serve(options, console, stage);
    } catch (const std::exception& error) {
        return stage.Refuse(StartFault::System, error.what(), kExitFailed);
    }
}

}  // namespace wrb
