// A line chart as inline SVG, with the same numbers as a table.
#pragma once

#include <string>
#include <vector>

#include "View.h"

namespace wrb {

struct ChartSeries {
    const char* name;
    std::vector<double> values;  // as many as there are times; none below 0
};

struct Chart {
    const char* id;
    const char* title;
    const char* unit;
    std::vector<std::string> times;  // "14:05", oldest first
    std::vector<ChartSeries> series;
};

// For the template "chart": the picture, the last value of each series in text, and the rows of the table. A chart
// without times says that there is nothing yet.
Data ChartData(const Chart& chart);

// "0.4", "12", "1500": as many digits as somebody reads.
std::string ChartNumber(double value);

}  // namespace wrb
