#include "CounterCatalog.h"

#include "CommandCatalog.h"
#include "CommandSlot.h"

namespace wrb {

std::vector<tagCountedRow> CountedRows() {
    std::vector<tagCountedRow> rows;
    for (const CommandEntry& entry : CommandCatalog()) {
        rows.push_back({std::string(entry.name), static_cast<uint32_t>(rows.size())});
    }
    for (const tagAlertSlot& alert : kAlertSlots) {
        rows.push_back({"CMDHL_CMDHL_GET_CLN_ALERT_MSG type " + std::to_string(alert.type), alert.slot});
    }
    return rows;
}

}  // namespace wrb
