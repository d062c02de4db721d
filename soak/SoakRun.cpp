#include "SoakRun.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <numeric>

#include "CommandCatalog.h"
#include "Console.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb::soak {
namespace {

namespace fs = std::filesystem;

constexpr ULONGLONG kSettleMilliseconds = 180'000;
constexpr uint64_t kWarmUpCommands = 8000;  // fewer do not bring each of the host's workers to every kind of command
constexpr std::size_t kHostAllowance = 4u << 20;
constexpr std::size_t kBackEndAllowance = 12u << 20;  // SQLite keeps up to 2 MB for each of its connections
constexpr std::uintmax_t kFeedbackRecordBytes = 166;
constexpr unsigned kMiB = 20;
constexpr uint64_t kAny = UINT64_MAX;

constexpr uint32_t kCommandRows = static_cast<uint32_t>(CommandSlot::kCount);
constexpr uint32_t kFirstCounted = static_cast<uint32_t>(CommandSlot::CMDHL_GET_ALL_SCAN_CFG);  // those before are not

constexpr wchar_t kScan[] = L"wrbscan.ini";
constexpr wchar_t kServer[] = L"Private\\wrbserver.ini";
constexpr wchar_t kTicket[] = L"LOG_TICKET_SECTION";

struct IniValue {
    const wchar_t* file;
    const wchar_t* section;
    const wchar_t* key;
    std::wstring value;
};

// Places to upload are free again soon, so that agents are admitted all along.
std::vector<IniValue> Settings(const std::wstring& folder) {
    return {
        {kScan, L"GLN_FEEDBACK_SECTION", L"GLNFeedbackEnabled", L"1"},
        {kScan, L"Firewall Alert", L"Mail", L"0"},  // mails would wait for a server that is not there
        {kScan, L"Global Setting", L"EnablePFWLogUploadingTicket", L"1"},
        {kServer, L"INI_SERVER_SECTION", L"CFWLogQueryCondition", kQueryCondition},
        {kServer, L"INI_SERVER_SECTION", L"UploadFolders", folder + L"\\incoming;" + folder + L"\\unpacked"},
        {kServer, kTicket, L"MaxUploadTime", L"2"},
        {kServer, kTicket, L"MinClearListFrequencyInSec", L"1"},
        {kServer, kTicket, L"MaxWaitTime", std::to_wstring(kLongestWait)},
    };
}

std::wstring PrepareHome(const std::wstring& folder) {
    for (const wchar_t* name : {L"packages", L"incoming", L"unpacked", L"home\\temp"}) {
        fs::create_directories(folder + L"\\" + name);
    }
    for (const auto& [file, section, key, value] : Settings(folder)) {
        WritePrivateProfileStringW(section, key, value.c_str(), (folder + L"\\home\\" + file).c_str());
    }
    wchar_t protectionKey[256] = L"";
    GetPrivateProfileStringW(L"INI_SERVER_SECTION", L"StringProtectionKey", L"", protectionKey, 256,
                             (folder + L"\\home\\" + kServer).c_str());
    return protectionKey;
}

std::wstring Absolute(const std::string& path) {
    return fs::absolute(Utf8ToWide(path)).make_preferred().wstring();
}

}  // namespace

SoakRun::SoakRun(const Options& options)
    : m_options(options),
      m_folder(Absolute(options.folder)),
      m_storeFolder(Absolute(options.storeFolder.empty() ? options.folder : options.storeFolder)),
      m_database(options.store.empty() ? m_storeFolder + L"\\agents.db" : Utf8ToWide(options.store)),
      m_field(std::make_unique<Field>(m_folder, PrepareHome(m_folder))),
      m_tally(Kinds().size()) {
    Operator::Files files{m_database, m_folder + L"\\log", {}};
    if (!options.calm) {
        files.clockLibrary = test::ProgramFolder() + L"wrb_soak_clock.dll";
    }
    m_services = std::make_unique<Operator>(files, m_field->presence, m_field->ledger);
    m_disk = std::make_unique<StoreDisk>(m_storeFolder);
    m_chaos =
        std::make_unique<Chaos>(*m_services, *m_field, *m_disk, Chaos::Plan{options.seed, options.calm, m_database});
    for (unsigned thread = 0; thread < options.threads; ++thread) {
        m_workers.emplace_back(*m_field, thread, options.seed);
    }
}

bool SoakRun::Run() {
    PrintOut("soak: seed " + std::to_string(m_options.seed) + "\n");
    Seed();
    m_services->StartBackEnd();
    m_services->StartHost();
    m_field->questions.Learn(m_field->commands);
    const uint64_t ceiling = uint64_t{m_options.memoryMiB} << kMiB;
    Watch watch(*m_field, {{"wrbhost", &m_services->Host(), ceiling}, {"wrbback", &m_services->BackEnd(), ceiling}},
                [this] { return Progress(); });
    Result result;
    result.threads = m_options.threads;
    result.seed = m_options.seed;
    Load(result);
    watch.Stop();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    result.seconds = elapsed.count();
    m_services->StopHost();
    m_services->StopBackEnd();
    result.ledger = m_field->ledger.Check(m_database, m_services->CountedAsLost());
    CheckCounters(result.faults);
    CheckTotals(result.faults);
    result.filesLeft = CheckWhatIsLeft(result.faults);
    result.chaos = m_chaos->Counts();
    return PrintReport(*m_field, m_tally, *m_services, watch, result);
}

// One agent of its own for each thread that changes settings.
void SoakRun::Seed() const {
    std::string text = "{\"agents\": [";
    for (unsigned thread = 0; thread < m_options.threads; ++thread) {
        text +=
            (thread == 0 ? "{\"uid\": \"" : ", {\"uid\": \"") + WideToUtf8(SettingAgent(thread)) + "\", \"scan\": {}}";
    }
    const std::wstring more = m_folder + L"\\more-agents.json";
    test::WriteAll(more, text + "]}");
    for (const std::wstring& file : {Absolute(m_options.agents), more}) {
        RunProgram(L"wrbback.exe", {L"seed", file, L"--db", m_database});
    }
}

// The resources of the services are measured before and after the last round, in which nothing is disturbed.
void SoakRun::Load(Result& result) {
    const auto nothing = [](const LoadRun&) {};
    const uint64_t hundredth = m_options.commands / 100;
    Round("warming up", 10 * hundredth, nothing);
    Round("chaos", 60 * hundredth, [this](const LoadRun& load) { m_chaos->Run(load); });
    Round("warming up again", WarmUpAgain(), nothing);
    result.flatness = {{"wrbhost", m_services->Host().Use().value(), {}, kHostAllowance},
                       {"wrbback", m_services->BackEnd().Use().value(), {}, kBackEndAllowance}};
    Round("and on", 20 * hundredth, nothing);
    result.flatness[0].late = m_services->Host().Use().value();
    result.flatness[1].late = m_services->BackEnd().Use().value();
}

void SoakRun::Round(const char* name, uint64_t commands, const Meanwhile& meanwhile) {
    PrintOut(std::string("soak: ") + name + "\n");
    LoadRun load(static_cast<unsigned>(m_workers.size()), commands, [this](unsigned thread) {
        RunOne(m_workers[thread], m_tally);
        return true;
    });
    meanwhile(load);
    load.Wait();
    Settle();
}

// Waits until the host has done all that it has read. The first command has the library book the calls that it kept
// while the counters' mutex was held.
void SoakRun::Settle() {
    AskTicket(m_workers.front());
    const ULONGLONG end = GetTickCount64() + kSettleMilliseconds;
    for (unsigned quiet = 0; quiet < 5 && GetTickCount64() < end; Sleep(100)) {
        quiet = m_field->ledger.Settled() && m_services->CallsInProgress() == 0 ? quiet + 1 : 0;
    }
}

uint64_t SoakRun::WarmUpAgain() const {
    return std::max(m_options.commands / 10, kWarmUpCommands);
}

std::string SoakRun::Progress() const {
    const uint64_t done =
        std::accumulate(m_tally.begin(), m_tally.end(), uint64_t{0},
                        [](uint64_t sum, const KindTally& kind) { return sum + kind.latencies.Count(); });
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    return "soak: " + std::to_string(done) + " of " + std::to_string(m_options.commands / 100 * 90 + WarmUpAgain()) +
           " commands, " + std::to_string(static_cast<uint64_t>(static_cast<double>(done) / elapsed.count())) +
           " a second\n";
}

// What a host had read and not begun when it was killed is not counted.
void SoakRun::CheckCounters(std::vector<std::string>& faults) const {
    const bool killed = m_services->Host().Kills() != 0;
    const CommandTally& commands = m_field->commands;
    for (uint32_t row = kFirstCounted; row < kCommandRows; ++row) {
        const uint32_t least = killed ? commands.Answered(row) : commands.Delivered(row);
        const uint32_t calls = m_services->Calls(row);
        if (calls < least || calls > commands.Delivered(row)) {
            faults.push_back(std::string(CommandCatalog()[row].name) + ": " + std::to_string(commands.Delivered(row)) +
                             " delivered, " + std::to_string(commands.Answered(row)) + " answered, " +
                             std::to_string(calls) + " counted");
        }
    }
}

// The numbers that a killed program had counted are gone. Changes fail while the disk is full.
void SoakRun::CheckTotals(std::vector<std::string>& faults) const {
    const Service& host = m_services->Host();
    const Service& backEnd = m_services->BackEnd();
    const struct {
        const char* label;
        const Service& service;
        uint64_t expected;
    } kTotals[] = {
        {"refused ", host, m_field->refused},
        {"threw ", host, m_field->threw},
        {"dropped ", host, 0},
        {"turned away ", host, 0},
        {" failed; records", backEnd, m_field->presence.store.EverLeft() ? kAny : 0},
    };
    for (const auto& [label, service, expected] : kTotals) {
        const uint64_t total = service.Total(label);
        const bool right = service.Kills() == 0 && expected != kAny ? total == expected : total <= expected;
        if (!right) {
            faults.push_back(std::string("the services counted \"") + label + "\" " + std::to_string(total) +
                             " times, not " + std::to_string(expected));
        }
    }
}

// Uploads, unpacked files and spill files are gone, but for what killed programs had under way; the feedback log is
// whole.
uint64_t SoakRun::CheckWhatIsLeft(std::vector<std::string>& faults) const {
    const bool killed = m_services->Host().Kills() + m_services->BackEnd().Kills() != 0;
    const fs::path feedback = m_folder + L"\\home\\temp\\wtc.log";
    uint64_t left = 0;
    for (const wchar_t* name : {L"incoming", L"unpacked", L"home\\temp"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder + L"\\" + name)) {
            if (entry.path() == feedback) {
                continue;
            }
            ++left;
            if (!killed) {
                faults.push_back("left behind: " + WideToUtf8(entry.path().wstring()));
            }
        }
    }
    const std::uintmax_t bytes = fs::exists(feedback) ? fs::file_size(feedback) : 0;
    if (bytes % kFeedbackRecordBytes != 0 || bytes == 0 || bytes / kFeedbackRecordBytes > m_field->feedbackRecords) {
        faults.push_back("the feedback log has " + std::to_string(bytes) + " bytes");
    }
    return left;
}

}  // namespace wrb::soak
