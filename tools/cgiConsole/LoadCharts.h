// The load of the last hour: numbers of the last interval, and charts.
#pragma once

#include "CounterSection.h"
#include "View.h"

namespace wrb {

// "load": the last sample's rate, percentiles and the hour's failures; "charts": one list entry a chart. `reader` is
// attached.
void AddLoad(const CounterReader& reader, Data& data);

}  // namespace wrb
