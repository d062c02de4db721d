#include <string>
#include <string_view>
#include <vector>

#include "AllScanValues.h"
#include "Allocations.h"
#include "Ratio.h"
#include "SampleAgent.h"

namespace wrb::bench {
namespace {

void Render(benchmark::State& state) {
    const AllScanValues values = TakeAllScanValues(SampleConfig(), SampleLists());
    const AllocationCounter counter(state);
    for (auto _ : state) {
        std::wstring out;
        ExportAllScanGroups(out, kSampleUid, values);
        benchmark::DoNotOptimize(out.data());
    }
}

// Each key, equals sign, value and line end is a piece of its own.
std::vector<std::wstring> PiecesOf(std::wstring_view text) {
    std::vector<std::wstring> pieces;
    while (!text.empty()) {
        std::size_t end = text.find_first_of(L"=\n");
        end += end == 0 ? 1 : 0;
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return pieces;
}

void AppendPieces(benchmark::State& state) {
    std::wstring text;
    ExportAllScanGroups(text, kSampleUid, TakeAllScanValues(SampleConfig(), SampleLists()));
    const std::vector<std::wstring> pieces = PiecesOf(text);
    for (auto _ : state) {
        std::wstring out;
        out.reserve(20480);
        for (const std::wstring& piece : pieces) {
            out.append(piece);
        }
        benchmark::DoNotOptimize(out.data());
    }
}

}  // namespace

void AddRenderBenchmarks() {
    AddRatio("twelve sections, render", Render, "append of the finished pieces", AppendPieces, Goal::AtMost, 3);
}

}  // namespace wrb::bench
