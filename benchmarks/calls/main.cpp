// Runs each command many times, and its floor as often. The system calls are counted from outside, in the trace of the
// Wine server; to tell the calls apart, this program opens an event that does not exist before each of them.
//
// Prints its thread's number in hexadecimal, then each row as it is to be shown: title, most calls allowed, floor.
#include <windows.h>

#include <cstdio>
#include <string>

#include "DebugLog.h"
#include "Handle.h"
#include "PipeFixture.h"
#include "PipeWork.h"
#include "cmdhl.h"

namespace wrb::bench {
namespace {

constexpr int kWarmUp = 20;  // what is made once is made
constexpr int kCalls = 100;
constexpr DWORD kPauseMilliseconds = 2;  // lets the services catch up: a busy pipe would cost the client more calls

bool Unknown() {
    return cmdhl_Process(L"CMDHL_GET_NOTHING\tpipe\tuid", 0xFFFFFFFF) == 0;
}

bool Nothing() {
    return true;
}

constexpr struct {
    const char* title;
    bool (*work)();
    int most;
    const char* floorText;
    bool (*floor)();
} kRows[] = {
    {"unknown command", Unknown, 0, "nothing", Nothing},
    {"CMDHL_ECHO", Echo, 6, "one bare message", BareEcho},
    {"CMDHL_GET_MS_CFG, server-wide", GetServerScan, 10, "one bare message of two pieces", BareReply},
    // Eight of them ask for the process that serves each request, whose end ends the wait, and for the one that
    // answers: no other may. Windows makes one call of each question, Wine two. The processes are not kept from the
    // request before: the service may have a new one while the former still runs, and its answers would be refused.
    {"CMDHL_GET_MS_CFG", GetManualScan, 50, "five bare connections", FiveConnections},
    {"CMDHL_SET_MS_CFG", SetManualScan, 14, "two bare messages", TwoMessages},
    {"CMDHL_PFW_UPDATE_CFW_COUNT", CountFirewall, 8, "one bare message", OneMessage},
};

void Mark(const std::wstring& name) {
    const KernelHandle none(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
}

bool Run(const std::wstring& name, bool (*work)()) {
    bool succeeded = true;
    for (int i = 0; i < kWarmUp; ++i) {
        succeeded &= work();
    }
    for (int i = 0; i < kCalls; ++i) {
        Mark(L"wrb_calls_" + name);
        succeeded &= work();
        Mark(L"wrb_calls_pause");
        Sleep(kPauseMilliseconds);
    }
    return succeeded;
}

bool RunAll() {
    std::printf("%04lx\n", GetCurrentThreadId());
    for (const auto& row : kRows) {
        const std::wstring number = std::to_wstring(&row - kRows);
        if (!Run(L"ours_" + number, row.work) || !Run(L"floor_" + number, row.floor)) {
            std::fprintf(stderr, "%s: a call failed\n", row.title);
            return false;
        }
        std::printf("%s\t%d\t%s\n", row.title, row.most, row.floorText);
    }
    return true;
}

}  // namespace
}  // namespace wrb::bench

int main() {
    // As on a server in production: the log is set up, and its filter lets warnings and errors through.
    DebugLogSetup(L"", L"", "BENCH", true);
    wrb::LogFilter::Shared().Set(wrb::LogFilterWord(wrb::kRankWarning));
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::bench::NeedSink();
    wrb::bench::NeedDatabase();
    const bool succeeded = wrb::bench::RunAll();
    cmdhl_Finalize();
    return succeeded ? 0 : 1;
}
