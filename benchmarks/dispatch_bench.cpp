#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "Allocations.h"
#include "Ratio.h"
#include "cmdhl.h"

namespace wrb::bench {
namespace {

constexpr std::wstring_view kUnknown =
    L"CMDHL_GET_NOTHING\treply-pipe-0123456789\t11111111-2222-3333-4444-555555555555\t1\t0\t1";

void UnknownCommand(benchmark::State& state) {
    const AllocationCounter counter(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(cmdhl_Process(kUnknown.data(), kUnknown.size() * sizeof(wchar_t)));
    }
}

std::map<std::wstring, int, std::less<>> NamesOfTheTable() {
    std::map<std::wstring, int, std::less<>> names;
#define WRB_COMMAND(name, ...) names.emplace(L"" #name, 0);
#include "CommandTable.inc"
    return names;
}

void CopyAndLookUp(benchmark::State& state) {
    const auto names = NamesOfTheTable();
    const std::wstring_view name = kUnknown.substr(0, kUnknown.find(L'\t'));
    for (auto _ : state) {
        std::wstring text(kUnknown);
        benchmark::DoNotOptimize(text.data());
        benchmark::DoNotOptimize(names.find(name));
    }
}

}  // namespace

void AddDispatchBenchmarks() {
    cmdhl_Initialize(L"", L"", nullptr);
    AddRatio("cmdhl_Process, unknown command", UnknownCommand, "one copy of the text, one map look-up", CopyAndLookUp,
             Goal::AtMost, 3);
}

}  // namespace wrb::bench
