// Updates of scan settings and privileges. None of these commands answers: field 1 is the uid, and the result shows in
// the debug log and, when it is a failure, in the command's counters.
#include <array>
#include <string>

#include "CmdProtocol.h"
#include "CommandSlot.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "cmdhl_Handlers.h"
#include "cmdhm_PrivilegeUpdate.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace {

using wrb::CommandSlot;
using wrb::DbPrivilegeBit;

// The log numbers results by slots of their own: ten of them come before the one of the table's first row.
constexpr uint32_t kFirstResultSlot = 10;

using ScanSetter = bool (*)(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);

// The frame of an update: counts the call, reads the uid, has `store` take the rest of the message and reports what it
// returns. What `store` throws passes through.
template <typename Store>
bool Update(CommandSlot slot, CCmdProtocol& message, Store&& store) {
    wrb::CounterCall call(static_cast<uint32_t>(slot));
    std::wstring uid;
    message >> uid;
    const bool stored = store(message, uid.c_str());
    call.ReportResult(stored);
    return stored;
}

template <ScanSetter setter>
bool ForOneAgent(CCmdProtocol& message, const wchar_t* uid) {
    return setter(message, uid, false, false, 0);
}

template <DbPrivilegeBit... bits>
bool Privileges(CCmdProtocol& message, const wchar_t* uid) {
    static constexpr DbPrivilegeBit kBits[] = {bits...};
    return cmdhm_SetPrivileges(message, uid, kBits);
}

// The same fields for each scan type; one that fails does not keep the others from being written.
bool AllExclusions(CCmdProtocol& message, const wchar_t* uid) {
    CCmdProtocol fields = message;
    std::wstring excludeOwnProducts;
    std::array<std::wstring, 3> lists;
    fields >> excludeOwnProducts >> lists[0] >> lists[1] >> lists[2];
    WRB_LOG(kLogDebug8, L"[cmdhl_SetAllCfgEx] enter(%s)(%s)(%s)", lists[0].c_str(), lists[1].c_str(), lists[2].c_str());
    bool stored = true;
    for (const ScanSetter setter : {cmdhm_SetMSCfgEx, cmdhm_SetPSCfgEx, cmdhm_SetRTCfgEx, cmdhm_SetSNCfgEx}) {
        fields = message;
        stored = setter(fields, uid, false, false, 0) && stored;
    }
    return stored;
}

// Readers of the log look for this text and that of the result as they are, spelling included.
bool Warnings(CCmdProtocol& message, const wchar_t* uid) {
    WRB_LOG(kLogDebug8, L"[cmdhl_SetClinetCfgWarningSetting] enter");
    return Privileges<DbPrivilegeBit::ScheduleScanWarning, DbPrivilegeBit::VirusMailWarning>(message, uid);
}

}  // namespace

#define WRB_UPDATE(handler, command, store)                                      \
    void handler(CCmdProtocol& message) {                                        \
        const bool stored = Update(CommandSlot::command, message, store);        \
        WRB_LOG(kLogDebug8, L"[" #handler L"] result =[%d] slot =[%d]", stored,  \
                static_cast<uint32_t>(CommandSlot::command) + kFirstResultSlot); \
    }

// clang-format off: one line a row.
WRB_UPDATE(cmdhl_SetMSCfg, CMDHL_SET_MS_CFG, ForOneAgent<cmdhm_SetMSCfg>)
WRB_UPDATE(cmdhl_SetMSCfgEx, CMDHL_SET_MS_CFG_EX, ForOneAgent<cmdhm_SetMSCfgEx>)
WRB_UPDATE(cmdhl_SetRTCfg, CMDHL_SET_RT_CFG, ForOneAgent<cmdhm_SetRTCfg>)
WRB_UPDATE(cmdhl_SetRTCfgEx, CMDHL_SET_RT_CFG_EX, ForOneAgent<cmdhm_SetRTCfgEx>)
WRB_UPDATE(cmdhl_SetPSCfg, CMDHL_SET_PS_CFG, ForOneAgent<cmdhm_SetPSCfg>)
WRB_UPDATE(cmdhl_SetPSCfgEx, CMDHL_SET_PS_CFG_EX, ForOneAgent<cmdhm_SetPSCfgEx>)
WRB_UPDATE(cmdhl_SetSNCfg, CMDHL_SET_SN_CFG, ForOneAgent<cmdhm_SetSNCfg>)
WRB_UPDATE(cmdhl_SetSNCfgEx, CMDHL_SET_SN_CFG_EX, ForOneAgent<cmdhm_SetSNCfgEx>)
WRB_UPDATE(cmdhl_SetSpyMSCfg, CMDHL_SET_SPY_MS_CFG, ForOneAgent<cmdhm_SetSpyMSCfg>)
WRB_UPDATE(cmdhl_SetSpyRTCfg, CMDHL_SET_SPY_RT_CFG, ForOneAgent<cmdhm_SetSpyRTCfg>)
WRB_UPDATE(cmdhl_SetSpyPSCfg, CMDHL_SET_SPY_PS_CFG, ForOneAgent<cmdhm_SetSpyPSCfg>)
WRB_UPDATE(cmdhl_SetSpySNCfg, CMDHL_SET_SPY_SN_CFG, ForOneAgent<cmdhm_SetSpySNCfg>)
WRB_UPDATE(cmdhl_SetAllCfgEx, CMDHL_SET_ALL_CFG_EX, AllExclusions)
WRB_UPDATE(cmdhl_SetMailScanRTCfg, CMDHL_SET_MAILSCAN_RT_CFG, Privileges<DbPrivilegeBit::Pop3MailScan>)
WRB_UPDATE(cmdhl_SetClientCfgSUStatus, CMDHL_SET_CLIENTCFG_SU_STATUS, Privileges<DbPrivilegeBit::ScheduleUpdate>)
// clang-format on

#undef WRB_UPDATE

void cmdhl_SetClientCfgWarningSetting(CCmdProtocol& message) {
    const bool stored = Update(CommandSlot::CMDHL_SET_CLIENTCFG_WARNING_SETTING, message, Warnings);
    WRB_LOG(kLogDebug8, L"[cmdhl_SetClinetCfgWarningSetting] result =[%d]", stored);
}
