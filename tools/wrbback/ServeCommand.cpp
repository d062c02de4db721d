#include <windows.h>

#include <chrono>

#include "AccessList.h"
#include "Commands.h"
#include "Console.h"
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

int FailAtPipe(const std::string& pipe, DWORD error) {
    return Fail(error == ERROR_ALREADY_EXISTS ? "another program serves the " + pipe
                                              : "cannot create the " + pipe + " (error " + std::to_string(error) + ")",
                kExitFailed);
}

void PrintCounters(const DbServerCounters& db, const RecordServerCounters& records, const LogServerCounters& log) {
    PrintOut("wrbback: stopped; database: " + std::to_string(db.reads) + " reads, " + std::to_string(db.writes) +
             " writes, " + std::to_string(db.badRequests) + " refused, " + std::to_string(db.failed) +
             " failed; records: " + std::to_string(records.stored) + " stored, " + std::to_string(records.badMessages) +
             " refused, " + std::to_string(records.lost) + " lost; log: " + std::to_string(log.lines) + " lines, " +
             std::to_string(log.badMessages) + " refused, " + std::to_string(log.lost) + " lost\n");
}

// Starts and stops all services. The log service starts first and stops last, so that it gets every line.
int RunServices(const ServeOptions& options, const LogSettings& settings, const StopEvent& stop) {
    Notes screen([](const std::wstring& note) { PrintErr("wrbback: " + WideToUtf8(VisibleText(note)) + "\n"); });
    LogServer log(settings, [&screen](const std::wstring& note) { screen.Write(note); });
    const auto write = [&log](wchar_t level, const std::wstring& note) {
        PrintErr("wrbback: " + WideToUtf8(VisibleText(note)) + "\n");
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
        return FailAtPipe("log service's pipe", GetLastError());
    }
    if (!db.Start()) {
        return FailAtPipe("database server's pipe", GetLastError());
    }
    if (const wchar_t* pipe = records.Start()) {
        const DWORD error = GetLastError();
        return FailAtPipe("pipe " + WideToUtf8(pipe), error);
    }
    PrintOut("wrbback: ready\n");
    stop.Wait();
    const StopWatchdog watchdog(stop, stop.Limit(kStopLimit),
                                [] { return "wrbback: a service is still busy; giving up"; });
    PrintOut("wrbback: stopping\n");
    records.Stop();
    db.Stop();
    log.Stop();
    PrintCounters(db.Counters(), records.Counters(), log.Counters());
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
        return Fail(error == ERROR_ALREADY_EXISTS
                        ? "already running on this machine"
                        : "cannot create the stop event (error " + std::to_string(error) + ")",
                    kExitFailed);
    }
    if (settings.enabled && LogFiles(settings.files).Write("") == LogWriteResult::Failed) {
        const DWORD error = GetLastError();
        return Fail("no log can be written to the folder " + WideToUtf8(settings.files.folder) + " (error " +
                        std::to_string(error) + ")",
                    kExitFailed);
    }
    try {
        return RunServices(options, settings, stop);
    } catch (const SqlError& error) {
        return Fail(error.what(), kExitFailed);
    }
}

}  // namespace wrb
