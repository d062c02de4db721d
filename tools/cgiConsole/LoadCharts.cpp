#include "LoadCharts.h"

#include <algorithm>
#include <functional>

#include "Chart.h"
#include "Listing.h"

namespace wrb {
namespace {

constexpr int64_t kSecondsOfAPoint = 60;

// The samples of one minute.
struct Point {
    int64_t second = 0;
    uint64_t milliseconds = 0;
    uint64_t calls = 0;
    uint64_t failures = 0;
    uint32_t p50 = 0;  // of the slowest sample
    uint32_t p95 = 0;
    uint32_t p99 = 0;

    void Add(const CounterSample& sample) {
        milliseconds += sample.milliseconds;
        calls += sample.calls;
        failures += sample.failures;
        p50 = std::max(p50, sample.p50);
        p95 = std::max(p95, sample.p95);
        p99 = std::max(p99, sample.p99);
    }

    double Rate() const {
        return milliseconds == 0 ? 0 : static_cast<double>(calls) * 1000 / static_cast<double>(milliseconds);
    }
};

std::vector<Point> PointsOf(const std::vector<CounterSample>& samples) {
    std::vector<Point> points;
    for (const CounterSample& sample : samples) {
        const int64_t minute = sample.second / kSecondsOfAPoint * kSecondsOfAPoint;
        if (points.empty() || points.back().second != minute) {
            points.push_back({.second = minute});
        }
        points.back().Add(sample);
    }
    return points;
}

double Milliseconds(uint32_t microseconds) {
    return microseconds / 1000.0;
}

template <typename ValueOf>
ChartSeries Series(const char* name, const std::vector<Point>& points, ValueOf valueOf) {
    ChartSeries series{name, {}};
    for (const Point& point : points) {
        series.values.push_back(std::invoke(valueOf, point));
    }
    return series;
}

Data Charts(const std::vector<Point>& points) {
    constexpr std::size_t kClockAt = 11;  // of the text of a time; other texts are shorter
    std::vector<std::string> times;
    for (const Point& point : points) {
        const std::string time = TimeText(point.second);
        times.push_back(time.size() < kClockAt ? time : time.substr(kClockAt, 5));
    }
    const auto time = [](uint32_t Point::*part) {
        return [part](const Point& point) { return Milliseconds(point.*part); };
    };
    const Chart charts[] = {
        {"rate", "Commands", "a second", times, {Series("commands", points, &Point::Rate)}},
        {"times",
         "Run times, the slowest ten seconds of each minute",
         "ms",
         times,
         {Series("p50", points, time(&Point::p50)), Series("p95", points, time(&Point::p95)),
          Series("p99", points, time(&Point::p99))}},
        {"failures",
         "Failed commands",
         "a minute",
         times,
         {Series("failed", points, [](const Point& point) { return static_cast<double>(point.failures); })}},
    };
    Data list = ListData();
    for (const Chart& chart : charts) {
        list.push_back(ChartData(chart));
    }
    return list;
}

}  // namespace

void AddLoad(const CounterReader& reader, Data& data) {
    const std::vector<CounterSample> samples = reader.Samples();
    const CounterSample last = samples.empty() ? CounterSample{} : samples.back();
    Point latest;
    latest.Add(last);
    uint64_t failures = 0;
    for (const CounterSample& sample : samples) {
        failures += sample.failures;
    }
    data["hasSamples"] = !samples.empty();
    data["rate"] = ChartNumber(latest.Rate());
    data["p50"] = ChartNumber(Milliseconds(last.p50));
    data["p95"] = ChartNumber(Milliseconds(last.p95));
    data["p99"] = ChartNumber(Milliseconds(last.p99));
    data["hourFailures"] = NumberData(failures);
    data["charts"] = Charts(PointsOf(samples));
}

}  // namespace wrb
