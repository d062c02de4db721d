#include "Ratio.h"

namespace wrb::bench {
namespace {

std::vector<Ratio>& Rows() {
    static std::vector<Ratio> rows;
    return rows;
}

void Register(const std::string& name, Body body, int threads) {
    benchmark::RegisterBenchmark(name.c_str(), body)->Threads(threads)->UseRealTime();
}

}  // namespace

void AddRatio(const std::string& title, Body figure, const std::string& floorText, Body floor, Goal goal, double limit,
              const std::vector<int>& threads) {
    for (const int count : threads) {
        const std::string named = title + ": ";
        Register(named + "ours", figure, count);
        Register(named + floorText, floor, count);
        Rows().push_back({title, named + "ours", named + floorText, floorText, goal, limit, count});
    }
}

const std::vector<Ratio>& Ratios() {
    return Rows();
}

}  // namespace wrb::bench
