#include <string>

#include "CounterCatalog.h"
#include "CounterSection.h"
#include "StatusPage.h"

namespace wrb {
namespace {

void PutRow(CPutStream& out, const char* name, const HandlerCounterSlot& slot) {
    out << "<tr><td>" << name << "</td>";
    const uint64_t numbers[] = {slot.calls, slot.failures, slot.average, slot.maximum, slot.total};
    for (const uint64_t number : numbers) {
        out << "<td class=\"n\">" << std::to_string(number).c_str() << "</td>";
    }
    out << "</tr>\n";
}

}  // namespace

void PutCounterTable(CPutStream& out) {
    out << "<h2>Commands</h2>\n";
    CounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        out << "<p id=\"counters\">";
        out.Send(CounterAttachText(result), true);
        out << "</p>\n";
        return;
    }
    out << "<table id=\"counters\">\n<tr><th>command</th><th>calls</th><th>failed</th><th>average ms</th>"
           "<th>longest ms</th><th>total ms</th></tr>\n";
    for (const CountedRow& counted : CountedRows()) {
        if (const HandlerCounterSlot slot = reader.Slot(counted.slot); slot.calls != 0) {
            PutRow(out, counted.name.c_str(), slot);
        }
    }
    const Undelivered lost = reader.Undelivered();
    out << "</table>\n<p>calls in progress: " << reader.CallsInProgress()
        << "; not handed over: " << std::to_string(lost.rows).c_str() << " log rows, "
        << std::to_string(lost.events).c_str() << " events</p>\n";
}

}  // namespace wrb
