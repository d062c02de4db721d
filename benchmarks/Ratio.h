// A figure and its floor, measured in the same run and shown as a ratio.
//
// The floor is the least that the figure's work could cost: the bare system call, memcpy or look-up. Times
// differ from machine to machine; the ratio can be compared.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace wrb::bench {

using Body = void (*)(benchmark::State&);

enum class Goal {
    AtMost,       // figure / floor must not exceed the limit
    FasterBy,     // floor / figure must reach the limit
    Nanoseconds,  // the figure itself must not exceed the limit; the floor is there for comparison
};

struct Ratio {
    std::string title;
    std::string figure;  // names of the two benchmarks
    std::string floor;
    std::string floorText;
    Goal goal;
    double limit;
    int threads;
};

// Registers both bodies, once for each number of threads, and the row that compares them.
void AddRatio(const std::string& title, Body figure, const std::string& floorText, Body floor, Goal goal, double limit,
              const std::vector<int>& threads = {1});

const std::vector<Ratio>& Ratios();

// Each file of benchmarks adds its rows when called from main.
void AddLogBenchmarks();
void AddDispatchBenchmarks();
void AddIniBenchmarks();
void AddRecordBenchmarks();
void AddRenderBenchmarks();
void AddPipeBenchmarks();
void AddStoreBenchmarks();
void AddFirewallBenchmarks();
void AddAlertBenchmarks();

}  // namespace wrb::bench
