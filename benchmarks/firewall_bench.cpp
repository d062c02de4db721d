#include <windows.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "Allocations.h"
#include "BarePipe.h"
#include "CabinetWriter.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "PfwLogRecord.h"
#include "PipeFixture.h"
#include "PipePath.h"
#include "Ratio.h"
#include "SampleAgent.h"
#include "Text.h"
#include "cmdhl.h"
#include "cmdhl_CfwLogFile.h"
#include "cmdhl_LogTicket.h"

namespace wrb::bench {
namespace {

constexpr int kWaiting = 8000;
constexpr std::size_t kParsed = 20'000;  // records of the file that is only parsed
constexpr std::size_t kUploaded = 500;   // of one upload
constexpr DWORD kReadBytes = 64 * 1024;

std::filesystem::path TempPath(const wchar_t* name) {
    return std::filesystem::temp_directory_path() / name;
}

std::wstring Uid(int number) {
    wchar_t text[40];
    FormatInto(text, std::size(text), L"%08x-2222-3333-4444-555555555555", static_cast<uint32_t>(number) * 2654435761u);
    return text;
}

// A ticket with a full queue, over INI files that are read once.
class FullQueue {
  public:
    FullQueue() {
        const auto path = TempPath(L"wrb_bench_ticket.ini");
        std::ofstream(path) << "[Global Setting]\nEnablePFWLogUploadingTicket=1\n[LOG_TICKET_SECTION]\n"
                               "NumberOfConcurrentLogUploadingClient=0\nNumberOfMaxConcurrentLogUploadingClient=0\n"
                               "MaxWaitTime=86400\n";
        m_ini.init(path.c_str(), 86400);
        for (int i = 0; i < kWaiting; ++i) {
            uids.push_back(Uid(i));
            ticket.Request(uids.back());
        }
    }

    std::vector<std::wstring> uids;

  private:
    CINICache m_ini;

  public:
    LogTicket ticket{SystemClock(), m_ini, m_ini};
};

void TicketDecision(benchmark::State& state) {
    static FullQueue queue;
    std::size_t next = 0;
    const AllocationCounter counter(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(queue.ticket.Request(queue.uids[next]));
        next = (next + 1) % queue.uids.size();
    }
}

void MapLookUp(benchmark::State& state) {
    std::map<std::wstring, int64_t> waiting;
    std::vector<std::wstring> uids;
    for (int i = 0; i < kWaiting; ++i) {
        uids.push_back(Uid(i));
        waiting[uids.back()] = i;
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(waiting.find(uids[next]));
        next = (next + 1) % uids.size();
    }
}

// Each record a second later than the one before.
void WriteRecords(const std::filesystem::path& path, std::size_t count) {
    SWRB_PFW_LOG_ITEM item = {};
    item.byHead = kPfwLogHead;
    item.byRear = kPfwLogRear;
    item.byDirection = 2;
    item.dwTime = 1'700'000'000;
    std::snprintf(item.szLocalHost, sizeof item.szLocalHost, "192.168.100.200");
    std::snprintf(item.szRemoteHost, sizeof item.szRemoteHost, "2001:db8:85a3::8a2e:370:7334");
    std::snprintf(item.szPVName, sizeof item.szPVName, "C:\\Program Files\\Some Vendor\\Some Program\\program.exe");
    std::wcscpy(item.wszPVInfo, L"Some Program, version 12.0.1");
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (std::size_t i = 0; i < count; ++i) {
        ++item.dwTime;
        file.write(reinterpret_cast<const char*>(&item), sizeof item);
    }
}

const std::filesystem::path& ParsedFile() {
    static const std::filesystem::path path = [] {
        auto file = TempPath(L"wrb_bench_fw.log");
        WriteRecords(file, kParsed);
        return file;
    }();
    return path;
}

int Take(const FirewallLogEntry& entry) noexcept {
    benchmark::DoNotOptimize(entry.processPath);
    return 1;
}

void ParseRecords(benchmark::State& state) {
    const std::filesystem::path& file = ParsedFile();
    const AllocationCounter counter(state);
    while (state.KeepRunningBatch(kParsed)) {
        CfwUpload upload(kSampleUid, {Take, Take}, 600'000);
        if (processCFWLogFile(upload.Uid(), file.c_str(), upload) != 1) {
            state.SkipWithError("a record was lost");
        }
    }
}

void ReadBytes(benchmark::State& state) {
    const std::filesystem::path& path = ParsedFile();
    std::vector<char> buffer(kReadBytes);
    while (state.KeepRunningBatch(kParsed)) {
        const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD read = 0;
        while (ReadFile(file.Get(), buffer.data(), kReadBytes, &read, nullptr) && read != 0) {
        }
    }
}

std::filesystem::path UploadPath(const wchar_t* name) {
    const std::filesystem::path folder = HomeFolder() + L"Upload";
    std::filesystem::create_directories(folder);
    return folder / name;
}

// The reply pipe's name without its first 17 characters is added to it.
std::wstring UnpackFolder() {
    return UploadPath(L"wrb_bench_dir").wstring();
}

const std::filesystem::path& Package() {
    static const std::filesystem::path path = [] {
        const auto file = TempPath(L"wrb_bench_upload.log");
        auto package = TempPath(L"wrb_bench_package");
        std::filesystem::remove_all(UnpackFolder() + std::wstring(kSinkPipe).substr(17));  // left by an interrupted run
        WriteRecords(file, kUploaded);
        WriteCabinet(package.wstring(), {{"fw.log", file.wstring()}});
        return package;
    }();
    return path;
}

bool UploadOnce() {
    const std::filesystem::path copy = UploadPath(L"wrb_bench_package_copy");
    std::filesystem::remove(copy);  // left by an interrupted run
    std::filesystem::copy_file(Package(), copy);
    const std::wstring message = std::wstring(L"CMDHL_PFW_SET_LOG\t") + kSinkPipe + L"\t" + kSampleUid + L"\t" +
                                 copy.wstring() + L"\t" + UnpackFolder() + L"\t1";
    return cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)) == 1;
}

void Upload(benchmark::State& state) {
    NeedSink();
    NeedFirewallServices();
    while (state.KeepRunningBatch(kUploaded)) {
        if (!UploadOnce()) {
            state.SkipWithError("no handler ran");
        }
    }
}

// The same bytes that one record sends, in pieces of the same size.
void TwoMessages(benchmark::State& state) {
    NeedSink();
    NeedFirewallServices();
    static const bool uploaded = UploadOnce();
    const std::string toAgent = LastMessage(kAgentPipe);
    const std::string toPool = LastMessage(kPoolPipe);
    if (!uploaded || toAgent.empty() || toPool.empty()) {
        state.SkipWithError("the floor has no messages to send");
    }
    for (auto _ : state) {
        if (!BareSend(kAgentPipe, toAgent) || !BareSend(kPoolPipe, toPool, kPipePieceBytes)) {
            state.SkipWithError("the floor's write failed");
        }
    }
}

}  // namespace

void AddFirewallBenchmarks() {
    AddRatio("upload ticket, 8,000 waiting", TicketDecision, "one look-up among 8,000", MapLookUp, Goal::Nanoseconds,
             2000);
    AddRatio("firewall record, parsed", ParseRecords, "reading its bytes", ReadBytes, Goal::Nanoseconds, 500);
    AddRatio("firewall record, uploaded", Upload, "its two messages, bare, in pieces", TwoMessages, Goal::AtMost, 1.25);
}

}  // namespace wrb::bench
