#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "AnswerDiff.h"
#include "Bytes.h"
#include "CommandFilter.h"
#include "Console.h"
#include "Failure.h"
#include "JsonText.h"
#include "Latencies.h"
#include "RecordingFile.h"
#include "ReplayRun.h"
#include "ServedPipe.h"
#include "ServicePipes.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl replay monday.wrbrec                at the recorded pace
  wrbctl replay monday.wrbrec --speed 10     ten times as fast
  wrbctl replay monday.wrbrec --speed 0 --compare --command GET

The commands are run again: those that store something store it again. With --compare each answer that is not as it was
recorded is shown. In a masked recording a mask of a text stands for any text; agents have other uids than the server
knows, unless its database has been made for the recording.

Exit codes: 0 done, 1 answers differ or are missing, 2 wrong command line or no recording, 3 the host does not run.
)";

struct ReplayCommandOptions {
    std::string file;
    double speed = 1;
    ReplayOptions run;
    bool compares = false;
    bool json = false;
    CommandFilter filter;
};

// The results of all commands of one name.
struct CommandResult {
    uint64_t sent = 0;
    uint64_t failed = 0;  // not delivered, or not answered though it was when recorded
    uint64_t differ = 0;
    Latencies recorded;  // of the answered ones, as the host ran them
    Latencies replayed;  // from the message to the whole answer
};

class ReplayReport {
  public:
    ReplayReport(bool compares, bool isMasked, bool json) : m_compares(compares), m_isMasked(isMasked), m_json(json) {}

    // Any thread.
    void Add(const ReplayItem& item, const CommandMessage& parts, const Replayed& replayed, Progress& progress) {
        const bool wasAnswered = (item.record.command.flags & kRecordedAnswered) != 0;
        const std::wstring answer = WideTextOf(item.record.answer);
        const bool hasFailed = !replayed.isDelivered || (wasAnswered && !replayed.isAnswered);
        const bool differs =
            m_compares && !hasFailed && wasAnswered && !IsSameAnswer(answer, replayed.answer, m_isMasked);
        const std::string name = parts.entry != nullptr ? std::string(parts.entry->name) : "(unknown)";
        {
            const std::lock_guard lock(m_lock);
            progress.Step();
            CommandResult& result = m_results[name];
            ++result.sent;
            result.failed += hasFailed ? 1 : 0;
            result.differ += differs ? 1 : 0;
            if (wasAnswered && !hasFailed) {
                result.recorded.Add(item.record.command.runMicroseconds);
                result.replayed.Add(replayed.microseconds);
            }
        }
        if (hasFailed || differs) {
            Show(item, parts, replayed, hasFailed ? nullptr : &answer);
        }
    }

    bool IsGood() const {
        return std::ranges::all_of(m_results,
                                   [](const auto& row) { return row.second.failed + row.second.differ == 0; });
    }

    void PrintSummary() const { m_json ? PrintOut(JsonLine(SummaryJson()) + "\n") : PrintOut(SummaryTable()); }

  private:
    // `recorded` is null for an answer that did not come.
    void Show(const ReplayItem& item, const CommandMessage& parts, const Replayed& replayed,
              const std::wstring* recorded) const {
        const std::string name = WideToUtf8(VisibleText(parts.name));
        const std::string uid = WideToUtf8(VisibleText(parts.uid));
        if (m_json) {
            Json::Value row;
            row["number"] = static_cast<Json::UInt64>(item.number);
            row["command"] = name;
            row["uid"] = uid;
            row["recorded"] = WideToUtf8(WideTextOf(item.record.answer));
            row["replayed"] = recorded != nullptr ? Json::Value(WideToUtf8(replayed.answer)) : Json::Value();
            PrintOut(JsonLine(row) + "\n");
            return;
        }
        const std::string head = " " + std::to_string(item.number) + " " + name + (uid.empty() ? "" : " " + uid);
        PrintOut(recorded == nullptr ? "!!!" + head + (replayed.isDelivered ? ": no answer\n" : ": not delivered\n")
                                     : "---" + head + " recorded\n+++" + head + " replayed\n" +
                                           AnswerDiff(*recorded, replayed.answer, m_isMasked));
    }

    static double Milliseconds(const Latencies& times, double part) {
        return static_cast<double>(times.Percentile(part)) / 1000;
    }

    std::string SummaryTable() const {
        TextTable table(
            {L"command", L"sent", L"failed", L"differ", L"recorded p50 ms", L"p99", L"replayed p50 ms", L"p99"});
        for (const auto& [name, result] : m_results) {
            const auto number = [](uint64_t value) { return std::to_wstring(value); };
            const auto time = [](const Latencies& times, double part) {
                return times.Count() == 0 ? std::wstring(L"-") : FormatWide(L"%.1f", Milliseconds(times, part));
            };
            table.Add({Utf8ToWide(name), number(result.sent), number(result.failed),
                       m_compares ? number(result.differ) : L"-", time(result.recorded, 0.5),
                       time(result.recorded, 0.99), time(result.replayed, 0.5), time(result.replayed, 0.99)});
        }
        return table.Text(TerminalColumns());
    }

    Json::Value SummaryJson() const {
        Json::Value summary;
        Json::Value& rows = summary["commands"] = Json::Value(Json::arrayValue);
        for (const auto& [name, result] : m_results) {
            Json::Value& row = rows.append(Json::objectValue);
            row["name"] = name;
            row["sent"] = static_cast<Json::UInt64>(result.sent);
            row["failed"] = static_cast<Json::UInt64>(result.failed);
            row["differ"] = m_compares ? Json::Value(static_cast<Json::UInt64>(result.differ)) : Json::Value();
            row["recordedP50Ms"] = Milliseconds(result.recorded, 0.5);
            row["recordedP99Ms"] = Milliseconds(result.recorded, 0.99);
            row["replayedP50Ms"] = Milliseconds(result.replayed, 0.5);
            row["replayedP99Ms"] = Milliseconds(result.replayed, 0.99);
        }
        return summary;
    }

    const bool m_compares;
    const bool m_isMasked;
    const bool m_json;
    std::mutex m_lock;
    std::map<std::string, CommandResult> m_results;
};

// In the order in which the commands began.
std::vector<ReplayItem> ItemsOf(const Recording& recording, const ReplayCommandOptions& options) {
    std::vector<ReplayItem> items;
    for (std::size_t i = 0; i < recording.commands.size(); ++i) {
        const std::wstring message = WideTextOf(recording.commands[i].message);
        const CommandMessage parts = ReadCommandMessage(message);
        if (options.filter.Admits(parts.name, parts.uid)) {
            items.push_back({i + 1, 0, recording.commands[i]});
        }
    }
    const auto begin = [](const ReplayItem& item) { return item.record.command.beginMicroseconds; };
    std::ranges::stable_sort(items, {}, begin);
    for (ReplayItem& item : items) {
        item.dueMicroseconds =
            options.speed > 0
                ? static_cast<int64_t>(static_cast<double>(begin(item) - begin(items.front())) / options.speed)
                : 0;
    }
    return items;
}

int RunReplay(const ReplayCommandOptions& options) {
    std::unique_ptr<FileView> file;
    Recording recording;
    try {
        file = std::make_unique<FileView>(Utf8ToWide(options.file));
        recording = ReadRecording(file->Bytes());
    } catch (const std::runtime_error& error) {
        return Fail(kExitUsage, options.file + ": " + error.what());
    }
    if (!IsServed(kHostPipe)) {
        return Fail(kExitServiceNotRunning, "the host is not running; start wrbhost");
    }
    if (recording.missed != 0 || !recording.isWhole) {
        PrintErr("wrbctl: the recording lacks " +
                 (recording.isWhole ? std::to_string(recording.missed) + " commands\n" : "its end\n"));
    }
    ReplayReport report(options.compares, recording.head.isMasked != 0, options.json);
    {
        std::vector<ReplayItem> items = ItemsOf(recording, options);
        Progress progress("replayed", items.size());
        ReplayOptions run = options.run;
        run.awaitsEnds = options.compares;
        const ReplayRun replay(std::move(items), run,
                               [&](const ReplayItem& item, const CommandMessage& parts, const Replayed& replayed) {
                                   report.Add(item, parts, replayed, progress);
                               });
    }
    report.PrintSummary();
    return report.IsGood() ? kExitOk : kExitFailed;
}

}  // namespace

void AddReplay(CLI::App& app, Run& run) {
    const auto options = std::make_shared<ReplayCommandOptions>();
    CLI::App* const replay =
        AddSubcommand(app, "replay", "Send the commands of a recording again", kExamples, options, RunReplay, run);
    replay->add_option("file", options->file, "File that 'wrbctl record' has made")->required();
    replay->add_option("--speed", options->speed, "Times the recorded pace; 0: as fast as it goes")
        ->check(CLI::Range(0.0, 1'000'000.0))
        ->capture_default_str();
    replay->add_option("--threads", options->run.threads, "Agents that send at the same time")
        ->check(CLI::Range(1u, 256u))
        ->capture_default_str();
    replay->add_flag("--compare", options->compares, "Show the answers that are not as recorded");
    replay->add_flag("--json", options->json,
                     "Print a JSON object a line: a failure or difference each, the summary last");
    AddFilter(*replay, options->filter);
}

}  // namespace wrb
