#include "ScanSettingUpdates.h"

#include <array>
#include <string>

#include "CmdProtocol.h"
#include "CommandHandler.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {

bool SetAllExclusions(CCmdProtocol& message, const wchar_t* uid) {
    CCmdProtocol fields = message;
    std::wstring excludeOwnProducts;
    std::array<std::wstring, 3> lists;
    fields >> excludeOwnProducts >> lists[0] >> lists[1] >> lists[2];
    WRB_LOG_FROM(kLogDebug8, kOnCfg, __LINE__, L"[cmdhl_SetAllCfgEx] enter(%s)(%s)(%s)", lists[0].c_str(),
                 lists[1].c_str(), lists[2].c_str());
    bool stored = true;
    for (const ScanType type : {ScanType::MS, ScanType::PS, ScanType::RT, ScanType::SN}) {
        fields = message;
        stored = SetScanGroup(FindScanGroup(type, ScanGroupKind::Exclusion), fields, uid, false, false, 0) && stored;
    }
    return stored;
}

// Readers of the log look for this text and that of the result as they are, spelling included.
bool SetWarnings(CCmdProtocol& message, const wchar_t* uid) {
    WRB_LOG_FROM(kLogDebug8, kOnCfg, __LINE__, L"[cmdhl_SetClinetCfgWarningSetting] enter");
    return SetPrivileges<DbPrivilegeBit::ScheduleScanWarning, DbPrivilegeBit::VirusMailWarning>(message, uid);
}

}  // namespace wrb
