#include "CounterCatalog.h"
#include "CounterSection.h"
#include "Pages.h"

namespace wrb {
namespace {

Data CounterRow(const std::string& name, const HandlerCounterSlot& slot) {
    Data row;
    row["name"] = name;
    row["calls"] = NumberData(slot.calls);
    row["failures"] = NumberData(slot.failures);
    row["failed"] = slot.failures != 0;
    row["average"] = NumberData(slot.average);
    row["maximum"] = NumberData(slot.maximum);
    row["total"] = NumberData(slot.total);
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
            rows.push_back(CounterRow(counted.name, slot));
        }
    }
    data["anyCalls"] = !rows.is_empty_list();
    data["counters"] = std::move(rows);
    data["inProgress"] = NumberData(reader.CallsInProgress());
    const Undelivered lost = reader.Undelivered();
    data["lostRows"] = NumberData(lost.rows);
    data["lostEvents"] = NumberData(lost.events);
}

}  // namespace

View ShowOverview(const Request& /*request*/) {
    View view;
    AddCounters(view.data);
    return view;
}

}  // namespace wrb
