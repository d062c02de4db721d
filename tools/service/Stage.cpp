#include "Stage.h"

#include <windows.h>

#include "CrashDump.h"
#include "EventLog.h"
#include "ExitCode.h"
#include "HomeFolder.h"
#include "ServiceProcess.h"
#include "SystemText.h"
#include "Text.h"
#include "Version.h"

namespace wrb {
namespace {

constexpr uint32_t kWarningSeverity = 2;

}  // namespace

void Stage::DumpOnCrash() const {
    WriteDumpOnCrash(Utf8ToWide(m_spec.program), HomeFolder() + L"Log\\Dumps\\", [this](const Crash& crash) {
        Tell(WRB_EVENT_CRASHED, {crash.exception, crash.work, crash.dump});
        m_console.Drain(ConsoleQueue::kPatience);
    });
}

void Stage::Tell(uint32_t event, const std::vector<std::wstring>& texts) const noexcept {
    try {
        if (RunsAsService()) {
            WriteEvent(m_spec.eventSource, event, texts);
            return;
        }
        const std::string line = WideToUtf8(EventText(event, texts));
        event >> 30 >= kWarningSeverity ? m_console.Err(line) : m_console.Out(line);
    } catch (...) {
        // No memory for the text.
    }
}

int Stage::Refuse(StartFault fault, const std::string& why, int exitCode) const {
    ReportFault(fault);
    Tell(WRB_EVENT_START_REFUSED, {Utf8ToWide(why)});
    m_console.Drain(ConsoleQueue::kPatience);
    return exitCode;
}

int Stage::RefuseAtStopEvent(uint32_t error) const {
    return error == ERROR_ALREADY_EXISTS
               ? Refuse(StartFault::AlreadyRunning, "already running on this machine", kExitFailed)
               : Refuse(StartFault::System, "cannot create the stop event: " + SystemText(error), kExitFailed);
}

int Stage::RefuseAtPipe(const std::string& pipe, uint32_t error) const {
    return error == ERROR_ALREADY_EXISTS
               ? Refuse(StartFault::PipeTaken, "another program serves the " + pipe, kExitFailed)
               : Refuse(StartFault::System, "cannot create the " + pipe + ": " + SystemText(error), kExitFailed);
}

void Stage::Serving(const std::string& how) const {
    Tell(WRB_EVENT_STARTED, {Utf8ToWide(how), Utf8ToWide(Version())});
    ReportRunning();
}

void Stage::Stopping() const {
    ReportStopping();
    m_console.Out("stopping");
}

void Stage::Stopped(const std::string& counters) const {
    Tell(WRB_EVENT_STOPPED, {Utf8ToWide(counters)});
}

std::string Stage::GaveUp(const std::string& what) const {
    if (RunsAsService()) {
        Tell(WRB_EVENT_GAVE_UP, {Utf8ToWide(what)});
        ReportStopped();
    }
    return what;
}

}  // namespace wrb
