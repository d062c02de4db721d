#include "AgentFacts.h"
#include "AgentSettings.h"
#include "CommandMap.h"
#include "FirewallLogs.h"
#include "ScanSettingUpdates.h"
#include "cmdhl_RqINI.h"
#include "cmdhm_Bundles.h"
#include "cmdhm_Common.h"
#include "cmdhm_ScanCfg.h"

namespace wrb {

std::span<const CommandRow> CommandTable() {
    using enum ScanType;
    using enum ScanGroupKind;
    static constexpr CommandRow kRows[] = {
#define WRB_COMMAND(name, handler, role, fields, failure, lane) {L"" #name, CommandSlot::name, handler},
#include "CommandTable.inc"
    };
    return kRows;
}

}  // namespace wrb
