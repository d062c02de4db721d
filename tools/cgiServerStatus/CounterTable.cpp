#include <string>

#include "CounterSection.h"
#include "StatusPage.h"

namespace wrb {
namespace {

// In the table's order, which is also the order of the counter slots.
constexpr const wchar_t* kCommands[] = {
#define WRB_COMMAND(name, handler, role, fields, answers) L"" #name,
#include "CommandTable.inc"
#undef WRB_COMMAND
};

void PutRow(CPutStream& out, const wchar_t* command, const HandlerCounterSlot& slot) {
    out << "<tr>";
    PutCell(out, command);
    const uint64_t numbers[] = {slot.calls, slot.failures, slot.average, slot.maximum, slot.total};
    for (const uint64_t number : numbers) {
        out << "<td class=\"n\">" << std::to_string(number).c_str() << "</td>";
    }
    out << "</tr>\n";
}

}  // namespace

void PutCounterTable(CPutStream& out) {
    out << "<h2>Commands</h2>\n";
    CCounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        out << "<p id=\"counters\">";
        out.Send(CounterAttachText(result), true);
        out << "</p>\n";
        return;
    }
    out << "<table id=\"counters\">\n<tr><th>command</th><th>calls</th><th>failed</th><th>average ms</th>"
           "<th>longest ms</th><th>total ms</th></tr>\n";
    for (uint32_t i = 0; i < std::size(kCommands); ++i) {
        if (const HandlerCounterSlot slot = reader.Slot(i); slot.calls != 0) {
            PutRow(out, kCommands[i], slot);
        }
    }
    out << "</table>\n<p>calls in progress: " << reader.CallsInProgress() << "</p>\n";
}

}  // namespace wrb
