#include "CounterCatalog.h"

#include "CommandCatalog.h"
#include "CommandTable.h"

namespace wrb {

std::vector<CountedRow> CountedRows() {
    std::vector<CountedRow> rows;
    for (const CommandEntry& entry : CommandCatalog()) {
        rows.push_back({std::string(entry.name), static_cast<uint32_t>(rows.size())});
    }
    for (const AlertSlot& alert : kAlertSlots) {
        rows.push_back({"CMDHL_CMDHL_GET_CLN_ALERT_MSG type " + std::to_string(alert.type), alert.slot});
    }
    return rows;
}

}  // namespace wrb
