#include "DbAllScan.h"

#include "DbRequest.h"

bool dbGetClnAllScanCfgW(const wchar_t* uid, wrb::AllScanConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::ClientGetAllScanCfg, uid, caller, cfg);
}

bool dbGetClnAllScanExW(const wchar_t* uid, wrb::AllScanLists& lists, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::ClientGetAllScanEx, uid, caller, lists);
}
