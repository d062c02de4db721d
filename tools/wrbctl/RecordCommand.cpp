#include <windows.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Bytes.h"
#include "CommandFilter.h"
#include "CommandMessage.h"
#include "Console.h"
#include "Failure.h"
#include "Handle.h"
#include "Mask.h"
#include "RecordingFeed.h"
#include "RecordingFile.h"
#include "ServerStopEvent.h"
#include "SharedBlock.h"
#include "StopEvent.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl record monday.wrbrec                until Ctrl-C
  wrbctl record minute.wrbrec --for 60 --mask
  wrbctl record one.wrbrec --uid 3f2a6c10 --command GET --count 100

A recording holds messages and answers as they are: settings, passwords, names. Only administrators and your account may
open the file. --mask replaces uids and texts; the same uid always gets the same mask.

Exit codes: 0 done, 1 failed or commands are missing, 2 wrong command line, 3 the host does not run or has ended.
)";

constexpr DWORD kPauseMilliseconds = 20;
constexpr uint64_t kProgressMilliseconds = 1000;

struct RecordOptions {
    std::string file;
    double seconds = 0;  // 0: until Ctrl-C
    uint64_t count = 0;  // 0: likewise
    bool mask = false;
    bool replaces = false;
    CommandFilter filter;
};

std::atomic<bool> g_isStopped{false};

BOOL WINAPI OnControl(DWORD) {
    g_isStopped = true;
    return TRUE;
}

// Reads the feed for as long as it lives.
class FeedClaim {
  public:
    explicit FeedClaim(RecordingFeed& feed) : m_feed(feed), m_isHeld(feed.Begin(GetCurrentProcessId())) {}
    ~FeedClaim() {
        if (m_isHeld) {
            m_feed.End();
        }
    }
    FeedClaim(const FeedClaim&) = delete;
    FeedClaim& operator=(const FeedClaim&) = delete;

    bool IsHeld() const { return m_isHeld; }
    bool Renew() { return m_isHeld = m_feed.Look(GetCurrentProcessId()); }

  private:
    RecordingFeed& m_feed;
    bool m_isHeld;
};

// From the feed into the file.
class Recorder {
  public:
    Recorder(const RecordOptions& options, RecordingFeed& feed, RecordingWriter& file)
        : m_options(options), m_feed(feed), m_file(file) {
        if (options.mask) {
            m_mask.emplace();
        }
    }

    bool IsFull() const { return m_options.count != 0 && m_commands >= m_options.count; }
    uint64_t Commands() const { return m_commands; }
    uint64_t Missed() const { return m_missed; }

    // What waits in the feed. False: it cannot be written; GetLastError tells.
    bool TakeAll() {
        while (!IsFull() && m_feed.Read(m_record)) {
            const auto view = ViewCommandRecord(BytesOf(m_record));
            if (!view) {
                m_feed.CountMissed();
            } else if (!Take(*view)) {
                return false;
            }
        }
        const uint64_t missed = m_feed.Missed() - m_missed;
        m_missed += missed;
        return missed == 0 || m_file.WriteCount(RecordKind::Missed, missed);
    }

    bool Finish() { return m_file.WriteCount(RecordKind::End, m_commands); }

  private:
    bool Take(const RecordView& view) {
        const std::wstring message = WideTextOf(view.message);
        const CommandMessage parts = ReadCommandMessage(message);
        if (!m_options.filter.Admits(parts.name, parts.uid)) {
            return true;
        }
        ++m_commands;
        return m_mask ? m_file.WriteRecord(BytesOf(m_mask->Record(view))) : m_file.WriteRecord(BytesOf(m_record));
    }

    const RecordOptions& m_options;
    RecordingFeed& m_feed;
    RecordingWriter& m_file;
    std::optional<Mask> m_mask;
    std::string m_record;
    uint64_t m_commands = 0;
    uint64_t m_missed = 0;
};

class RecordProgress {
  public:
    // Has an effect once a second.
    void Show(const Recorder& recorder) {
        if (const uint64_t now = GetTickCount64(); now >= m_next) {
            m_next = now + kProgressMilliseconds;
            m_line.Show(std::to_string(recorder.Commands()) + " commands recorded, " +
                        std::to_string(recorder.Missed()) + " missed");
        }
    }

  private:
    uint64_t m_next = 0;  // on the tick clock
    StatusLine m_line;
};

enum class Ending { Asked, HostEnded, TakenOver, CannotWrite };

// Records until the options, Ctrl-C, the host or a failure end it. CannotWrite: GetLastError tells.
Ending RecordAll(FeedClaim& claim, Recorder& recorder, HANDLE host, const RecordOptions& options,
                 RecordProgress& progress) {
    const uint64_t end = GetTickCount64() + static_cast<uint64_t>(options.seconds * 1000);
    bool hostRuns = true;
    while (hostRuns && !g_isStopped && !recorder.IsFull() && (options.seconds <= 0 || GetTickCount64() < end)) {
        hostRuns = WaitForSingleObject(host, kPauseMilliseconds) == WAIT_TIMEOUT;
        if (!claim.Renew()) {
            return Ending::TakenOver;
        }
        if (!recorder.TakeAll()) {
            return Ending::CannotWrite;
        }
        progress.Show(recorder);
    }
    if (!recorder.TakeAll() || !recorder.Finish()) {
        return Ending::CannotWrite;
    }
    return hostRuns ? Ending::Asked : Ending::HostEnded;
}

// The exit code of a recording that has its end.
int Report(const Recorder& recorder, const RecordOptions& options) {
    PrintOut(std::to_string(recorder.Commands()) + " commands in " + options.file + "\n");
    return recorder.Missed() == 0
               ? kExitOk
               : Fail(kExitFailed, std::to_string(recorder.Missed()) + " commands were too many or too long to record");
}

// The exit code.
int Follow(FeedClaim& claim, Recorder& recorder, HANDLE host, const RecordOptions& options) {
    PrintErr(std::string("wrbctl: recording until ") + (options.seconds > 0 ? "the time is over" : "Ctrl-C") + "\n");
    std::optional<RecordProgress> progress(std::in_place);
    const Ending ending = RecordAll(claim, recorder, host, options, *progress);
    const DWORD error = GetLastError();
    progress.reset();  // its line goes away
    if (ending == Ending::TakenOver) {
        return Fail(kExitFailed, "another program has taken the recording over; the file is cut short");
    }
    if (ending == Ending::CannotWrite) {
        return FailSystem(kExitFailed, "cannot write " + options.file, error);
    }
    const int code = Report(recorder, options);
    return ending == Ending::Asked ? code : Fail(kExitServiceNotRunning, "the host has ended");
}

int RunRecord(const RecordOptions& options) {
    const uint32_t processId = RunningProcess(kServerStopEvent);
    const KernelHandle host(processId != 0 ? OpenProcess(SYNCHRONIZE, FALSE, processId) : nullptr);
    SharedBlock<RecordingFeed> feed;
    if (!host || !feed.Open(RecordingSection(processId).c_str())) {
        const DWORD error = GetLastError();
        return processId == 0 ? Fail(kExitServiceNotRunning, "the host does not run, or you may not look at it")
                              : FailSystem(kExitFailed, "cannot record the host", error);
    }
    FeedClaim claim(*feed);
    if (!claim.IsHeld()) {
        return Fail(kExitFailed, "another program records already");
    }
    RecordingWriter file;
    RecordingHead head;
    head.isMasked = options.mask ? 1 : 0;
    head.beginMicroseconds = RecordingTime();
    if (!file.Create(Utf8ToWide(options.file), options.replaces, head)) {
        const DWORD error = GetLastError();
        return FailSystem(kExitFailed,
                          "cannot make " + options.file + (error == ERROR_FILE_EXISTS ? "; --force replaces it" : ""),
                          error);
    }
    SetConsoleCtrlHandler(OnControl, TRUE);
    Recorder recorder(options, *feed, file);
    return Follow(claim, recorder, host.Get(), options);
}

}  // namespace

void AddRecord(CLI::App& app, Run& run) {
    const auto options = std::make_shared<RecordOptions>();
    CLI::App* const record = AddSubcommand(app, "record", "Record messages and answers of the host in a file",
                                           kExamples, options, RunRecord, run);
    record->add_option("file", options->file, "File to make")->required();
    record->add_option("--for", options->seconds, "End after so many seconds (default: at Ctrl-C)")
        ->check(CLI::Range(0.001, 31'536'000.0));
    record->add_option("--count", options->count, "End after so many commands (default: at Ctrl-C)");
    record->add_flag("--mask", options->mask, "Replace uids and texts");
    record->add_flag("--force", options->replaces, "Replace a file that is there");
    AddFilter(*record, options->filter);
}

}  // namespace wrb
