#include "Chart.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace wrb {
namespace {

// The picture's coordinates; the page scales it to its place.
constexpr double kLeft = 44;
constexpr double kRight = 392;
constexpr double kTop = 12;
constexpr double kBottom = 140;

std::string Fixed(double value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

// The smallest of 1, 2, 5, 10, 20, 50, ... that is not below the value.
double RoundedUp(double value) {
    const double power = std::pow(10.0, std::floor(std::log10(std::max(value, 1.0))));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (value <= step * power) {
            return step * power;
        }
    }
    return 10 * power;
}

double HighestOf(const Chart& chart) {
    double highest = 0;
    for (const ChartSeries& series : chart.series) {
        for (const double value : series.values) {
            highest = std::max(highest, value);
        }
    }
    return RoundedUp(highest);
}

// A single value is a level line.
std::string Points(std::vector<double> values, double highest) {
    values.resize(std::max<std::size_t>(values.size(), 2), values.front());
    const double step = (kRight - kLeft) / static_cast<double>(values.size() - 1);
    std::string points;
    for (std::size_t i = 0; i < values.size(); ++i) {
        points += (i == 0 ? "" : " ") + Fixed(kLeft + step * static_cast<double>(i), 1) + "," +
                  Fixed(kBottom - (kBottom - kTop) * values[i] / highest, 1);
    }
    return points;
}

// The lines at nothing, the middle and the top, with their numbers.
Data Grid(double highest) {
    Data lines = ListData();
    for (const double part : {0.0, 0.5, 1.0}) {
        const double height = kBottom - (kBottom - kTop) * part;
        Data line;
        line["y"] = Fixed(height, 1);
        line["textY"] = Fixed(height + 4, 1);
        line["label"] = ChartNumber(highest * part);
        lines.push_back(line);
    }
    return lines;
}

Data Rows(const Chart& chart) {
    Data rows = ListData();
    for (std::size_t i = chart.times.size(); i-- > 0;) {
        Data cells = ListData();
        for (const ChartSeries& series : chart.series) {
            cells.push_back(Data(ChartNumber(series.values[i])));
        }
        Data row;
        row["time"] = chart.times[i];
        row["cells"] = std::move(cells);
        rows.push_back(row);
    }
    return rows;
}

}  // namespace

std::string ChartNumber(double value) {
    return Fixed(value, value < 10 && value != std::floor(value) ? 1 : 0);
}

Data ChartData(const Chart& chart) {
    Data data;
    data["id"] = chart.id;
    data["title"] = chart.title;
    data["unit"] = chart.unit;
    data["any"] = !chart.times.empty();
    if (chart.times.empty()) {
        return data;
    }
    const double highest = HighestOf(chart);
    Data series = ListData();
    for (std::size_t i = 0; i < chart.series.size(); ++i) {
        Data row;
        row["name"] = chart.series[i].name;
        row["number"] = NumberData(i + 1);
        row["last"] = ChartNumber(chart.series[i].values.back());
        row["points"] = Points(chart.series[i].values, highest);
        series.push_back(row);
    }
    data["series"] = std::move(series);
    data["grid"] = Grid(highest);
    data["first"] = chart.times.front();
    data["middle"] = chart.times.size() < 3 ? "" : chart.times[chart.times.size() / 2];
    data["last"] = chart.times.size() < 2 ? "" : chart.times.back();
    data["rows"] = Rows(chart);
    return data;
}

}  // namespace wrb
