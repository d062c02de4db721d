#include <windows.h>

#include <string>
#include <string_view>

#include "BarePipe.h"
#include "PipeFixture.h"
#include "Ratio.h"
#include "SampleAgent.h"
#include "cmdhl.h"

namespace wrb::bench {
namespace {

const std::wstring kContent(200, L'x');

void Process(benchmark::State& state, const std::wstring& message) {
    for (auto _ : state) {
        if (cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)) != 1) {
            state.SkipWithError("no handler ran");
        }
    }
}

void Echo(benchmark::State& state) {
    NeedSink();
    Process(state, std::wstring(L"CMDHL_ECHO\t") + kSinkPipe + L"\t" + kContent);
}

std::string_view BytesOf(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

void BareEcho(benchmark::State& state) {
    NeedSink();
    for (auto _ : state) {
        if (!BareSend(kSinkPipe, BytesOf(kContent))) {
            state.SkipWithError("the floor's write failed");
        }
    }
}

void GetManualScan(benchmark::State& state) {
    NeedSink();
    NeedDatabase();
    Process(state, std::wstring(L"CMDHL_GET_MS_CFG\t") + kSinkPipe + L"\t" + kSampleUid);
}

// Unique a thread and a call, as the product's reply ids are.
std::wstring NextReplyId() {
    thread_local uint32_t calls = 0;
    return std::to_wstring(static_cast<int32_t>((GetCurrentThreadId() & 0xFFFF) << 16 | (++calls & 0xFFFF)));
}

bool BareAsk(const std::wstring& command, const std::wstring& number) {
    const std::wstring id = NextReplyId();
    const std::string request = DatabaseRequest(command + L"\t" + id + L"\t" + kSampleUid + L"\t" + number);
    return BareExchange(kDbPipe, request, L"DbCln_" + id);
}

// Two requests, their two answers, the reply: five connections.
void FiveConnections(benchmark::State& state) {
    NeedSink();
    NeedDatabase();
    const std::wstring reply(700, L'x');
    for (auto _ : state) {
        if (!BareAsk(L"DB_GET_MSCF", L"0") || !BareAsk(L"DB_GET_EXTRA", L"1") || !BareSend(kSinkPipe, BytesOf(reply))) {
            state.SkipWithError("an exchange of the floor failed");
        }
    }
}

const std::wstring kExtensions = L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386";

void SetManualScan(benchmark::State& state) {
    NeedDatabase();
    Process(state, std::wstring(L"CMDHL_SET_MS_CFG\t") + kSampleUid +
                       L"\t1\t0\t0\t0\t1\t1\t1\t20\t1\t3\t0\t4\t0\t1\t1\t" + kExtensions +
                       L"\t1\t1\t\\temp\t\\temp\t1\t1\tUniverse-5-4\t0\t2\t1");
}

// The settings and the agent's "changed" bit.
void TwoMessages(benchmark::State& state) {
    NeedDatabase();
    const std::wstring to = std::wstring(L"\t-1\t") + kSampleUid;
    const std::string settings = DatabaseRequest(L"DB_SET_MSCF" + to + L"\t554175997\t4294901757\t20\t3\t4\t" +
                                                 kExtensions + L"\t\\temp\tUniverse-5-4\t0");
    const std::string changed = DatabaseRequest(L"DB_SET_CONF_FLAG" + to + L"\t1\t0\t0");
    for (auto _ : state) {
        if (!BareSend(kDbPipe, settings) || !BareSend(kDbPipe, changed)) {
            state.SkipWithError("a write of the floor failed");
        }
    }
}

}  // namespace

void AddPipeBenchmarks() {
    AddRatio("CMDHL_ECHO", Echo, "connect, write, close", BareEcho, Goal::AtMost, 1.10, {1, 2, 8});
    AddRatio("CMDHL_GET_MS_CFG", GetManualScan, "five bare connections", FiveConnections, Goal::AtMost, 1.15,
             {1, 2, 8});
    AddRatio("CMDHL_SET_MS_CFG", SetManualScan, "two bare messages", TwoMessages, Goal::AtMost, 1.15, {1, 2, 8});
}

}  // namespace wrb::bench
