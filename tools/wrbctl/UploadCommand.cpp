#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "CabinetWriter.h"
#include "CmdProtocol.h"
#include "Console.h"
#include "Conversation.h"
#include "DbListing.h"
#include "Failure.h"
#include "Fwlog.h"
#include "HomeFolder.h"
#include "Polling.h"
#include "SettingTarget.h"
#include "Subcommands.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl upload firewall 11111111-2222-3333-4444-555555555555 samples\firewall.jsonl

Asks for a place, makes the log and its package in the folder Upload of the home folder, sends it and counts the rows
that arrive. 'wrbctl fwlog' describes the lines of the file.

Exit codes: 0 done, 1 failed, 2 wrong command line or input, 3 a service does not run, 4 no place or not all rows in
time.
)";

constexpr DWORD kPollMilliseconds = 50;
constexpr uint64_t kRowsMilliseconds = 30'000;

struct UploadOptions {
    std::string uid;
    std::string file;
    double waitSeconds = 60;
};

// A file that is gone with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::filesystem::path path) : m_path(std::move(path)) {}
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::wstring Path() const { return m_path.wstring(); }

  private:
    const std::filesystem::path m_path;
};

// Waits for a place of the upload ticket. 0, or the exit code of a failure that has been reported.
int AwaitPlace(const std::wstring& uid, double seconds) {
    const uint64_t deadline = GetTickCount64() + static_cast<uint64_t>(seconds * 1000);
    for (;;) {
        CommandTally tally;
        const Answer answer = Ask(tally, L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", {uid});
        if (!answer.answered) {
            return Fail(answer.delivered ? kExitTimedOut : kExitServiceNotRunning, "the host does not answer");
        }
        CCmdProtocol fields(answer.text.c_str());
        std::wstring one;
        uint32_t wait = 0;
        fields >> one >> wait;
        if (wait == 0) {
            return kExitOk;
        }
        if (GetTickCount64() + wait * uint64_t{1000} > deadline) {
            return Fail(kExitTimedOut, "the next place is free in " + std::to_string(wait) + " s; see --wait");
        }
        PrintErr("waiting " + std::to_string(wait) + " s for a place\n");
        Sleep(wait * 1000);
    }
}

std::optional<uint64_t> CountRows(const std::wstring& uid) {
    DbListing rows;
    const DbListQuery query{.table = L"firewall_log", .search = uid, .rows = 1};
    return ReadDbListing(query, rows) ? std::optional(rows.total) : std::nullopt;
}

int Send(const std::wstring& uid, const std::wstring& package, const std::wstring& base) {
    CommandTally tally;
    const Answer answer = Ask(tally, L"CMDHL_PFW_SET_LOG", {uid, package, base, L"1"});
    return answer.text == L"1" ? kExitOk : Fail(kExitFailed, "the server refuses the package; the debug log says why");
}

int AwaitRows(const std::wstring& uid, uint64_t before, uint64_t records) {
    uint64_t rows = 0;
    const auto haveArrived = [&] {
        rows = std::max(CountRows(uid).value_or(before), before) - before;  // old rows may have been deleted
        return rows >= records;
    };
    const bool isWhole = PollUntil(haveArrived, kRowsMilliseconds, kPollMilliseconds);
    PrintOut(std::to_string(rows) + " of " + std::to_string(records) + " records arrived in the log pool\n");
    return isWhole ? kExitOk : kExitTimedOut;
}

int RunUpload(const UploadOptions& options) {
    const std::wstring uid = Utf8ToWide(options.uid);
    if (const int code = CheckTarget(uid); code != kExitOk) {
        return code;
    }
    const std::wstring folder = HomeFolder() + L"Upload\\";
    if (std::error_code error; !std::filesystem::is_directory(folder, error)) {
        return Fail(kExitFailed, "there is no folder " + WideToUtf8(folder) + "; make it, and let wrbhost write there");
    }
    const std::wstring stem = folder + NewReplyPipe();
    const TemporaryFile log(stem + L".log");
    const TemporaryFile package(stem + L".cab");  // of which the server leaves nothing when all goes well
    uint64_t records = 0;
    const FwlogWriteOptions write{
        .out = WideToUtf8(log.Path()), .version = {}, .in = options.file, .records = &records};
    if (const int code = RunFwlogWrite(write); code != kExitOk) {
        return code;
    }
    if (records == 0) {
        return Fail(kExitUsage, options.file + " has no record");
    }
    WriteCabinet(package.Path(), {{"firewall.log", log.Path()}});
    const std::optional<uint64_t> before = CountRows(uid);
    if (!before) {
        return Fail(kExitFailed, "the database does not count its firewall log");
    }
    int code = AwaitPlace(uid, options.waitSeconds);
    code = code == kExitOk ? Send(uid, package.Path(), stem + L"-") : code;
    return code == kExitOk ? AwaitRows(uid, *before, records) : code;
}

}  // namespace

void AddUpload(CLI::App& app, Run& run) {
    CLI::App* const upload = app.add_subcommand("upload", "Upload a log as an agent does");
    upload->require_subcommand(1);
    upload->footer(kExamples);
    const auto options = std::make_shared<UploadOptions>();
    CLI::App* const firewall =
        AddSubcommand(*upload, "firewall", "Upload firewall records", kExamples, options, RunUpload, run);
    firewall->add_option("uid", options->uid, "The agent")->required();
    firewall->add_option("file", options->file, "JSON lines, a record each")->required()->check(CLI::ExistingFile);
    firewall->add_option("--wait", options->waitSeconds, "Seconds to wait for a place")
        ->check(CLI::Range(0.0, 86400.0))
        ->capture_default_str();
}

}  // namespace wrb
