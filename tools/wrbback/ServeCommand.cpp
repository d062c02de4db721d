#include <windows.h>

#include <algorithm>
#include <chrono>

#include "AccessList.h"
#include "Commands.h"
#include "ConsoleQueue.h"
#include "DbServer.h"
#include "DebugLog.h"
#include "ExitCode.h"
#include "LogFiles.h"
#include "LogServer.h"
#include "LogSettings.h"
#include "Notes.h"
#include "ReceivedLine.h"
#include "RecordServer.h"
#include "StopEvent.h"
#include "StopWatchdog.h"
#include "SystemText.h"
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
        if (!ParseLogLevel(settings.level)) {
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

int FailAtPipe(ConsoleQueue& console, const std::string& pipe, DWORD error) {
    return console.Fail(error == ERROR_ALREADY_EXISTS ? "another program serves the " + pipe
                                                      : "cannot create the " + pipe + ": " + SystemText(error),
                        kExitFailed);
}

std::string CountersText(const DbServerCounters& db, const RecordServerCounters& records,
                         const LogServerCounters& log) {
    return "stopped; database: " + std::to_string(db.reads) + " reads, " + std::to_string(db.writes) + " writes, " +
           std::to_string(db.badRequests) + " refused, " + std::to_string(db.failed) +
           " failed; records: " + std::to_string(records.stored) + " stored, " + std::to_string(records.badMessages) +
           " refused, " + std::to_string(records.lost) + " lost; log: " + std::to_string(log.lines) + " lines, " +
           std::to_string(log.badMessages) + " refused, " + std::to_string(log.lost) + " lost";
}

// Starts and stops all services. The log service starts first and stops last, so that it gets every line.
int RunServices(const ServeOptions& options, const LogSettings& settings, const StopEvent& stop,
                ConsoleQueue& console) {
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
                 .allowed = settings.allowed});
    RecordServer records({.database = Utf8ToWide(options.database),
                          .keep = options.maxRows,
                          .note = [&notes](const std::wstring& note) { notes.Write(note); },
                          .allowed = settings.allowed,
                          .alarm = [&write](const std::wstring& note) { write(kLogError, note); }});
    if (!log.Start()) {
        return FailAtPipe(console, "log service's pipe", GetLastError());
    }
    if (!db.Start()) {
        return FailAtPipe(console, "database server's pipe", GetLastError());
    }
    if (const wchar_t* pipe = records.Start()) {
        const DWORD error = GetLastError();
        return FailAtPipe(console, "pipe " + WideToUtf8(pipe), error);
    }
    console.Out("ready");
    stop.Wait();
    const auto limit = stop.Limit(kStopLimit);
    const StopWatchdog watchdog(stop, console, limit, [] { return "a service is still busy; giving up"; });
    console.Out("stopping");
    records.Stop();
    db.Stop();
    log.Stop();
    console.Out(CountersText(db.Counters(), records.Counters(), log.Counters()));
    console.Drain(std::min(limit / 4, ConsoleQueue::kPatience));
    return kExitOk;
}

}  // namespace

int Serve(const ServeOptions& options) {
    LogSettings settings;
    if (const std::string wrong = Settle(options, settings); !wrong.empty()) {
        return Fail(wrong, kExitUsage);
    }
    StopEvent stop;
    if (!stop.Create(kBackEndStopEvent)) {
        const DWORD error = GetLastError();
        return Fail(error == ERROR_ALREADY_EXISTS ? "already running on this machine"
                                                  : "cannot create the stop event: " + SystemText(error),
                    kExitFailed);
    }
    if (settings.enabled && LogFiles(settings.files).Write("") == LogWriteResult::Failed) {
        const DWORD error = GetLastError();
        return Fail(
            "no log can be written to the folder " + WideToUtf8(settings.files.folder) + ": " + SystemText(error),
            kExitFailed);
    }
    ConsoleQueue console("wrbback");
    try {
        return RunServices(options, settings, stop, console);
    } catch (const SqlError& error) {
        return console.Fail(error.what(), kExitFailed);
    }
}

}  // namespace wrb
