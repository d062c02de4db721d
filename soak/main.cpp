// wrb_soak: many agents, services that are stopped and started, and a check afterwards of what is left.
//
// Rounds: warm up; the back end is stopped and started twice; the host once; warm up the restarted programs; the long
// round, before and after which the resources of the services are measured.
#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <filesystem>

#include "CommandLine.h"
#include "Console.h"
#include "CounterSection.h"
#include "ExitCode.h"
#include "Report.h"
#include "Soak.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb::soak {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kAwayMilliseconds = 500;
constexpr ULONGLONG kSettleMilliseconds = 180'000;
constexpr uint64_t kWarmUpCommands = 8000;  // fewer do not bring each of the host's workers to every kind of command
constexpr std::size_t kHostAllowance = 4u << 20;
constexpr std::size_t kBackEndAllowance = 12u << 20;  // SQLite keeps up to 2 MB for each of its connections
constexpr std::uintmax_t kFeedbackRecordBytes = 166;

constexpr uint32_t kCommandRows = static_cast<uint32_t>(CommandSlot::kCount);
constexpr uint32_t kFirstCounted = static_cast<uint32_t>(CommandSlot::CMDHL_GET_ALL_SCAN_CFG);  // those before are not

struct Options {
    std::string folder;
    std::string agents;
    uint64_t commands = 100'000;
    unsigned threads = 8;
};

void SetIni(const std::wstring& file, const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    WritePrivateProfileStringW(section, key, value, file.c_str());
}

std::wstring GetIni(const std::wstring& file, const wchar_t* section, const wchar_t* key) {
    wchar_t value[256] = L"";
    GetPrivateProfileStringW(section, key, L"", value, 256, file.c_str());
    return value;
}

class Soak {
  public:
    explicit Soak(const Options& options)
        : m_options(options),
          m_folder(fs::absolute(Utf8ToWide(options.folder)).make_preferred().wstring()),
          m_database(m_folder + L"\\agents.db"),
          m_host(L"wrbhost.exe", {}, {L"--stop", L"--timeout", L"120"}, "wrbhost: serving"),
          m_backEnd(L"wrbback.exe",
                    {L"serve", L"--db", m_database, L"--log-folder", m_folder + L"\\log", L"--log-level", L"W",
                     L"--max-rows", L"0"},
                    {L"stop", L"--timeout", L"120"}, "wrbback: ready"),
          m_tally(Kinds().size()) {
        for (const wchar_t* name : {L"packages", L"incoming", L"unpacked", L"home\\temp"}) {
            fs::create_directories(m_folder + L"\\" + name);
        }
        const std::wstring server = m_folder + L"\\home\\Private\\wrbserver.ini";
        SetIni(server, L"INI_SERVER_SECTION", L"CFWLogQueryCondition", kQueryCondition);
        SetIni(server, L"INI_SERVER_SECTION", L"UploadFolders", m_folder.c_str());
        SetIni(m_folder + L"\\home\\wrbscan.ini", L"GLN_FEEDBACK_SECTION", L"GLNFeedbackEnabled", L"1");
        m_field = std::make_unique<Field>(m_folder, GetIni(server, L"INI_SERVER_SECTION", L"StringProtectionKey"),
                                          m_host, m_backEnd);
        for (unsigned thread = 0; thread < options.threads; ++thread) {
            m_workers.emplace_back(*m_field, thread);
        }
    }

    bool Run() {
        Seed();
        m_backEnd.Start();
        StartHost();
        m_field->questions.Learn(m_field->delivered);
        const auto start = std::chrono::steady_clock::now();
        Result result;
        Load(result);
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        result.threads = m_options.threads;
        StopHost();
        m_backEnd.Stop();
        result.ledger = m_field->ledger.Check(m_database);
        CheckCounters(result.faults);
        CheckWhatIsLeft(result.faults);
        return PrintReport(*m_field, m_tally, result);
    }

  private:
    void Seed() {
        std::string text = "{\"agents\": [";
        for (unsigned thread = 0; thread < m_options.threads; ++thread) {
            text += (thread == 0 ? "{\"uid\": \"" : ", {\"uid\": \"") + WideToUtf8(SettingAgent(thread)) +
                    "\", \"scan\": {}}";
        }
        const std::wstring more = m_folder + L"\\more-agents.json";
        test::WriteAll(more, text + "]}");
        for (const std::wstring& file : {fs::absolute(Utf8ToWide(m_options.agents)).wstring(), more}) {
            RunProgram(L"wrbback.exe", {L"seed", file, L"--db", m_database});
        }
    }

    // The counters start with the host. This program holds them, so they can be read after the host has stopped.
    void StartHost() {
        m_host.Start();
        m_counters = std::make_unique<CounterReader>();
        uint32_t error = 0;
        if (const CounterAttach attached = m_counters->Attach(error); attached != CounterAttach::Attached) {
            throw std::runtime_error("the counters: " + WideToUtf8(CounterAttachText(attached)));
        }
    }

    void StopHost() {
        m_host.Stop();
        for (uint32_t row = 0; row < kCommandRows; ++row) {
            m_calls[row] += m_counters->Slot(row).calls;
        }
        m_counters.reset();
    }

    void Round(const char* name, unsigned percent, const std::function<void(const WaitForPart&)>& meanwhile) {
        RunCommands(name, m_options.commands * percent / 100, meanwhile);
    }

    void RunCommands(const char* name, uint64_t commands, const std::function<void(const WaitForPart&)>& meanwhile) {
        PrintOut(std::string("soak: ") + name + "\n");
        RunRound(m_workers, m_tally, commands, meanwhile);
        Settle();
    }

    void Load(Result& result) {
        const auto nothing = [](const WaitForPart&) {};
        Round("warming up", 10, nothing);
        Round("the back end is stopped and started", 30, [this](const WaitForPart& waitFor) {
            for (const double part : {0.2, 0.6}) {
                waitFor(part);
                m_field->ledger.BackEndLeaves(m_backEnd.Uptime());
                m_backEnd.Stop();
                Sleep(kAwayMilliseconds);
                m_backEnd.Start();
            }
        });
        Round("the host is stopped and started", 20, [this](const WaitForPart& waitFor) {
            waitFor(0.4);
            m_host.Uptime().Leaves();
            StopHost();
            Sleep(kAwayMilliseconds);
            StartHost();
        });
        RunCommands("warming up again", std::max(m_options.commands / 10, kWarmUpCommands), nothing);
        result.flatness = {{"wrbhost", m_host.Use(), {}, kHostAllowance},
                           {"wrbback", m_backEnd.Use(), {}, kBackEndAllowance}};
        Round("and on", 30, nothing);
        result.flatness[0].late = m_host.Use();
        result.flatness[1].late = m_backEnd.Use();
    }

    // Waits until the host has done all that it has read.
    void Settle() {
        const ULONGLONG end = GetTickCount64() + kSettleMilliseconds;
        for (unsigned quiet = 0; quiet < 5 && GetTickCount64() < end; Sleep(100)) {
            quiet = m_field->ledger.Settled() && m_counters->CallsInProgress() == 0 ? quiet + 1 : 0;
        }
    }

    void CheckCounters(std::vector<std::string>& faults) const {
        for (uint32_t row = kFirstCounted; row < kCommandRows; ++row) {
            if (m_calls[row] != m_field->delivered.Of(row)) {
                faults.push_back(std::string(CommandName(row)) + ": " + std::to_string(m_field->delivered.Of(row)) +
                                 " delivered, " + std::to_string(m_calls[row]) + " counted");
            }
        }
        const struct {
            const char* label;
            const Service& service;
            uint64_t expected;
        } kTotals[] = {
            {"refused ", m_host, m_field->refused},
            {"threw ", m_host, m_field->threw},
            {"dropped ", m_host, 0},
            {"turned away ", m_host, 0},
            {" lost; log", m_backEnd, 0},
            {" failed; records", m_backEnd, 0},
        };
        for (const auto& [label, service, expected] : kTotals) {
            if (const uint64_t total = service.Total(label); total != expected) {
                faults.push_back(std::string("the services counted \"") + label + "\" " + std::to_string(total) +
                                 " times, not " + std::to_string(expected));
            }
        }
    }

    // Uploads, unpacked files and spill files are gone; the feedback log is whole.
    void CheckWhatIsLeft(std::vector<std::string>& faults) const {
        const fs::path feedback = m_folder + L"\\home\\temp\\wtc.log";
        for (const wchar_t* name : {L"incoming", L"unpacked", L"home\\temp"}) {
            for (const fs::directory_entry& left : fs::directory_iterator(m_folder + L"\\" + name)) {
                if (left.path() != feedback) {
                    faults.push_back("left behind: " + WideToUtf8(left.path().wstring()));
                }
            }
        }
        const std::uintmax_t bytes = fs::exists(feedback) ? fs::file_size(feedback) : 0;
        if (bytes % kFeedbackRecordBytes != 0 || bytes == 0 ||
            bytes / kFeedbackRecordBytes > m_field->feedbackRecords) {
            faults.push_back("the feedback log has " + std::to_string(bytes) + " bytes");
        }
    }

    const Options m_options;
    const std::wstring m_folder;
    const std::wstring m_database;
    Service m_host;
    Service m_backEnd;
    std::unique_ptr<CounterReader> m_counters;
    std::array<uint32_t, kCommandRows> m_calls{};  // over all starts of the host
    std::unique_ptr<Field> m_field;
    std::vector<Worker> m_workers;
    Tally m_tally;
};

int Main() {
    Options options;
    CLI::App app(
        "Runs commands of every kind against wrbhost and wrbback while these are stopped and started, and "
        "checks every answer and record. The registry must name FOLDER\\home as the home folder.",
        "wrb_soak");
    app.add_option("--folder", options.folder, "Folder to work in, with a copy of the sample home folder in it")
        ->required();
    app.add_option("--agents", options.agents, "The sample agents")->required();
    app.add_option("--commands", options.commands,
                   "Commands in all, but for a warm-up of 8000 at least (default: 100000)")
        ->check(CLI::Range(uint64_t{1000}, uint64_t{100'000'000}));
    app.add_option("--threads", options.threads, "Threads that send them (default: 8)")->check(CLI::Range(1u, 64u));
    app.footer(
        "Example:\n"
        "  wrb_soak --folder work --agents samples/agents.json --commands 2000\n"
        "\n"
        "Exit codes: 0 passed, 1 failed, 2 wrong command line");
    if (const auto code = ParseArguments(app, Utf8Arguments())) {
        return *code;
    }
    return Soak(options).Run() ? kExitOk : kExitFailed;
}

}  // namespace
}  // namespace wrb::soak

int main() {
    try {
        return wrb::soak::Main();
    } catch (const std::exception& error) {
        wrb::PrintErr(std::string("wrb_soak: ") + error.what() + "\n");
        return wrb::kExitFailed;
    }
}
