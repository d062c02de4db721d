#include <algorithm>

#include "Chart.h"
#include "CounterCatalog.h"
#include "CounterSection.h"
#include "LiveBoard.h"
#include "LoadCharts.h"
#include "Pages.h"
#include "ServerStatus.h"

namespace wrb {
namespace {

void AddHealth(Data& data) {
    const StatusItems items = ReadServerStatus();
    Data parts = ListData();
    std::string named[3];  // by health
    for (const StatusItem& item : items) {
        Data part;
        part["name"] = item.name;
        part["text"] = item.text;
        part["up"] = item.health == Health::Good;
        part["warn"] = item.health == Health::Warning;
        part["down"] = item.health == Health::Down;
        parts.push_back(part);
        std::string& names = named[static_cast<std::size_t>(item.health)];
        names += (names.empty() ? "" : ", ") + item.name;
    }
    data["parts"] = std::move(parts);
    data["isDown"] = WorstOf(items) == Health::Down;
    data["down"] = named[static_cast<std::size_t>(Health::Down)];
    data["warned"] = named[static_cast<std::size_t>(Health::Warning)];
    data["isGood"] = WorstOf(items) == Health::Good;
    data["hasWarning"] = WorstOf(items) == Health::Warning;
}

Data TimeOf(const TimeCounts& times, double part) {
    return Data(ChartNumber(static_cast<double>(PercentileOf(times, part)) / 1000));
}

Data CounterRow(const std::string& name, const HandlerCounterSlot& slot, const TimeCounts& times) {
    Data row;
    row["name"] = name;
    row["calls"] = NumberData(slot.calls);
    row["failures"] = NumberData(slot.failures);
    row["failed"] = slot.failures != 0;
    row["maximum"] = NumberData(slot.maximum);
    row["total"] = NumberData(slot.total);
    row["p50"] = TimeOf(times, 0.5);
    row["p95"] = TimeOf(times, 0.95);
    row["p99"] = TimeOf(times, 0.99);
    return row;
}

void AddCounters(Data& data) {
    CounterReader reader;
    uint32_t error = 0;
    const CounterAttach result = reader.Attach(error);
    data["attached"] = result == CounterAttach::Attached;
    data["unattached"] = TextData(CounterAttachText(result));
    if (result != CounterAttach::Attached) {
        return;
    }
    Data rows = ListData();
    for (const CountedRow& counted : CountedRows()) {
        if (const HandlerCounterSlot slot = reader.Slot(counted.slot); slot.calls != 0) {
            rows.push_back(CounterRow(counted.name, slot, reader.Times(counted.slot)));
        }
    }
    data["anyCalls"] = !rows.is_empty_list();
    data["counters"] = std::move(rows);
    AddLoad(reader, data);
    data["inProgress"] = NumberData(reader.CallsInProgress());
    const std::optional<LiveState> live = ReadLiveState();
    data["uploadsWaiting"] = NumberData(live ? live->uploads.waiting : 0);
    const Undelivered lost = reader.Undelivered();
    data["lostRows"] = NumberData(lost.rows);
    data["lostEvents"] = NumberData(lost.events);
}

}  // namespace

View ShowOverview(const Request& /*request*/) {
    View view;
    AddHealth(view.data);
    AddCounters(view.data);
    return view;
}

}  // namespace wrb
