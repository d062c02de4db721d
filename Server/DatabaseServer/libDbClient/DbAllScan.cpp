#include "DbAllScan.h"

#include "DbRequest.h"

bool dbGetClnAllScanCfgW(const wchar_t* uid, tagClnAllScanCfg& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::ClientGetAllScanCfg, uid, caller, cfg);
}

bool dbGetClnAllScanExW(const wchar_t* uid, tagClnAllScanCfgEx& lists, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::ClientGetAllScanEx, uid, caller, lists);
}
