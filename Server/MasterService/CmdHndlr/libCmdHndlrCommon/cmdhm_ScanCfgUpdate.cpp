#include "cmdhm_ScanCfgUpdate.h"

#include <algorithm>

#include "AgentUid.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "DbAgent.h"
#include "DbScanUpdate.h"
#include "DebugLog.h"
#include "INICache.h"
#include "QmAgentClient.h"
#include "ScanCfgIni.h"
#include "ScanLog.h"

namespace wrb {
namespace {

constexpr uint32_t kEnableBit = 0x1;  // of the real-time word

// A text ends at its first NUL. It is cut here because the database server would end the whole request there.
void ReadText(CCmdProtocol& message, std::wstring& text) {
    message >> text;
    text.resize(std::min(text.size(), text.find(L'\0')));
}

// The member `flags` is the update's value.
ScanGroupValues ReadFields(const ScanGroup& group, CCmdProtocol& message) {
    ScanGroupValues values;
    for (const ScanRow* const row : group.updateRows) {
        switch (row->kind) {
            case ScanRowKind::Bit:
                values.flags |= TakeSwitch(message) ? row->bits : 0;
                break;
            case ScanRowKind::Int:
                message >> values.*(row->number);
                break;
            case ScanRowKind::Choice: {
                uint32_t number = 0;
                message >> number;
                values.flags |= row->choice->BitsOf(number);
                break;
            }
            case ScanRowKind::Text:
            case ScanRowKind::CustomActionPair:
                ReadText(message, values.*(row->text));
                break;
            case ScanRowKind::Uid:
            case ScanRowKind::Empty:
                break;
        }
    }
    return values;
}

void ReportRealTimeStatus(uint32_t oldEnable, uint32_t newEnable) {
    WRB_LOG(kLogDebug8, L"[cmdhm_SetRTCfgIni] Calling SendQmAgentEventLog() enable[%d]->[%d]", oldEnable, newEnable);
    if (qmaSendRtsStatusChange(newEnable) != 1) {
        WRB_LOG(kLogError, L"[cmdhm_SetRTCfgIni] failed to send RTS status change event to QM agent");
    }
}

}  // namespace

bool SetScanGroupIni(const ScanGroup& group, const ScanWrite& update, const ScanGroupValues& values,
                     const ScanGroupValues* unchanged) {
    const bool realTime = group.type == ScanType::RT && group.kind == ScanGroupKind::Main;
    ScanGroupValues before;
    if (realTime) {
        ReadScanGroupIni(ScanIniCache(), group, before);
    }
    const ScanIniWrite written = WriteScanGroupIni(ScanIniCache(), group, values, unchanged);
    LogScanUpdate(group, ScanUpdateLevel::Ini, L"", update, values);
    if (realTime && (written.bitsStored & kEnableBit) != 0) {
        ReportRealTimeStatus(before.flags & kEnableBit, values.flags & kEnableBit);
    }
    return written.complete;
}

bool SetScanGroupInDb(const ScanGroup& group, DbTarget target, const ScanWrite& update, const ScanGroupValues& values) {
    const bool sent =
        TextsFitLines(group, values, L"SetScanGroupInDb") && SetDbScanGroup(group, target, update, values) &&
        (group.kind != ScanGroupKind::Exclusion || SetDbScanFlags(group.type, target, update.value, update.mask)) &&
        (target ? dbSetConfFlagW(*target, group.configFlag, 0) : dbSetAllConfFlgW(group.configFlag, 0));
    LogScanUpdate(group, target ? ScanUpdateLevel::Agent : ScanUpdateLevel::All, target.value_or(L""), update, values);
    return sent;
}

bool SetScanGroup(const ScanGroup& group, CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini,
                  uint32_t flag) {
    const ScanGroupValues values = ReadFields(group, message);
    const ScanWrite update{.value = values.flags, .mask = group.updateMask, .flag = flag};
    const std::wstring field = CutUid(uid);
    bool stored = ini && SetScanGroupIni(group, update, values);
    if (!field.empty()) {
        stored = SetScanGroupInDb(group, field.c_str(), update, values);
    } else if (allAgents) {
        stored = SetScanGroupInDb(group, kEveryAgent, update, values);
    }
    return stored;
}

// What the functions by name are instances of.
template <ScanType type, ScanGroupKind kind>
bool SetCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) {
    return SetScanGroup(FindScanGroup(type, kind), message, uid, all, ini, flag);
}

}  // namespace wrb

using enum wrb::ScanType;
using enum wrb::ScanGroupKind;
using wrb::SetCfg;

// clang-format off
bool cmdhm_SetMSCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<MS, Main>(message, uid, all, ini, flag); }
bool cmdhm_SetRTCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<RT, Main>(message, uid, all, ini, flag); }
bool cmdhm_SetPSCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<PS, Main>(message, uid, all, ini, flag); }
bool cmdhm_SetSNCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<SN, Main>(message, uid, all, ini, flag); }
bool cmdhm_SetMSCfgEx(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<MS, Exclusion>(message, uid, all, ini, flag); }
bool cmdhm_SetRTCfgEx(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<RT, Exclusion>(message, uid, all, ini, flag); }
bool cmdhm_SetPSCfgEx(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<PS, Exclusion>(message, uid, all, ini, flag); }
bool cmdhm_SetSNCfgEx(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<SN, Exclusion>(message, uid, all, ini, flag); }
bool cmdhm_SetSpyMSCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<MS, Spyware>(message, uid, all, ini, flag); }
bool cmdhm_SetSpyRTCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<RT, Spyware>(message, uid, all, ini, flag); }
bool cmdhm_SetSpyPSCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<PS, Spyware>(message, uid, all, ini, flag); }
bool cmdhm_SetSpySNCfg(CCmdProtocol& message, const wchar_t* uid, bool all, bool ini, uint32_t flag) { return SetCfg<SN, Spyware>(message, uid, all, ini, flag); }
// clang-format on
