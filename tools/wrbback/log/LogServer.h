// The log service of the reference back end, on "Log_ServerNamePipe".
//
// It never logs through the debug log: that would come back to it. What it has to say of itself goes to `note`.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "JobLimit.h"
#include "LogFeed.h"
#include "LogFiles.h"
#include "LogSettings.h"
#include "LossCount.h"
#include "PipeListener.h"

namespace wrb {

struct LogLevelRow;
struct ReceivedLine;

struct LogServerCounters {
    uint64_t lines = 0;        // written
    uint64_t badMessages = 0;  // neither a line nor a level, and connections that were dropped
    uint64_t lost = 0;         // lines that could not be written
};

class LogServer {
  public:
    using Note = std::function<void(const std::wstring&)>;

    LogServer(const LogSettings& settings, Note note);

    // Sets the filter word and serves. False: GetLastError tells; ERROR_ALREADY_EXISTS means that another log service
    // runs.
    bool Start();
    void Stop();

    // A line of the back end's own, past the pipe and the filter.
    void WriteOwn(wchar_t level, std::wstring_view text);

    LogServerCounters Counters() const;

  private:
    Job Accept(std::string message, const PipePeer& peer);
    void Take(const std::string& message, const PipePeer& peer);
    void SetLevel(const LogLevelRow& row);
    void WriteLine(const ReceivedLine& line);
    void Show(const ReceivedLine& line, std::string_view text);
    void TellLost(uint64_t lines);

    const LogSettings m_settings;
    const Note m_note;
    LogFiles m_files;
    JobLimit m_fileLimit;
    SharedLogFeed m_feed;  // none: the system has refused it
    std::atomic<uint64_t> m_lines{0};
    std::atomic<uint64_t> m_badMessages{0};
    std::atomic<uint64_t> m_lost{0};
    LossCount m_untold;
    std::atomic<DWORD> m_lossReason{0};  // of the last lost line: 0: no space, else the system's error
    PipeListener m_listener;             // last: its thread uses the members above
};

}  // namespace wrb
