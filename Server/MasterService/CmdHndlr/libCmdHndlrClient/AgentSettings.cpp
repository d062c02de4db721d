#include "AgentSettings.h"

#include "AgentUid.h"
#include "BmPolicyCache.h"
#include "CmdProtocol.h"
#include "CommandHandler.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DbAgent.h"
#include "DebugLog.h"
#include "cmdhl_Reply.h"
#include "cmdhm_Bundles.h"
#include "cmdhm_Common.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_Vexor.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_RqINI.cpp"

namespace {

constexpr wchar_t kAllSetting[] = L"cmdhl_GetClientAllSetting";

// A part of all settings. It appends its sections, nothing when the agent has none; false when it failed.
struct SettingPart {
    const wchar_t* name;  // of its function, for the log
    wrb::Getter get;
    uint32_t changedBits = 0;  // of the agent's, cleared once the agent has the part
};

constexpr SettingPart kSettingParts[] = {
    {L"cmdhm_GetAllScanCfg", wrb::GetAllScanSections, wrb::kAllScanConfigFlags},
    {L"cmdhm_GetWtpSetting", wrb::ReadBundle<wrb::WtpValues>, wrb::kBundle<wrb::WtpValues>.configBit},
    {L"cmdhm_GetFARestoreSetting", wrb::ReadBundle<wrb::FARestoreValues>, wrb::kBundle<wrb::FARestoreValues>.configBit},
    {L"cmdhm_GetNCIESetting", cmdhm_GetNCIESetting},
    {L"cmdhm_GetSampleSubmissionSetting", cmdhm_GetSampleSubmissionSetting},
    {L"cmdhm_GetSablexSetting", cmdhm_GetSablexSetting},
    {L"cmdhm_GetAggrScanSetting", cmdhm_GetAggrScanSetting},
    {L"cmdhm_GetQMAgentPolicyInfo", cmdhm_GetQMAgentPolicyInfo},
    {L"cmdhm_GetServiceSwitch", cmdhm_GetServiceSwitch},
    {L"cmdhm_GetScanType", cmdhm_GetScanType},
    {L"cmdhm_GetSpywareWhiteList", cmdhm_GetSpywareWhiteList},
    {L"cmdhm_GetVexorSetting", wrb::GetVexorSetting},
    {L"GetCriticalSetting", wrb::GetCriticalSetting},
    {L"GetComponentVersions", [](std::wstring& out, const wchar_t*) { return wrb::GetComponentVersions(out); }},
    {L"GetIniSection", [](std::wstring& out, const wchar_t*) { return wrb::GetIniSection(out, L"Global Setting"); }},
};

// Appends the parts; the changed bits of those that are there. An agent that the database does not know has no parts.
// Its first part fails, and only then it is asked for: no request more than the parts make.
uint32_t AppendSettings(std::wstring& out, const wchar_t* uid) {
    uint32_t bits = 0;
    for (const SettingPart& part : kSettingParts) {
        std::wstring text;
        if (!part.get(text, uid)) {
            if (&part == kSettingParts && !wrb::IsKnownAgent(uid)) {
                return 0;
            }
            WRB_LOG(kLogError, L"%s - %s failed", kAllSetting, part.name);
        } else if (!text.empty()) {
            out += text;
            bits |= part.changedBits;
        }
    }
    return bits;
}

}  // namespace

bool wrb::GetVexorSetting(std::wstring& output, const wchar_t* uid) {
    const BmPolicyCache* const cache = g_pBmPolicyCache;
    return cmdhm_GetVexorSetting(output, uid, cache != nullptr ? cache->Policies() : std::vector<tagVEXORPolicyItem>());
}

void cmdhl_GetClientAllSetting(CCmdProtocol& message) {
    std::wstring replyPipe;
    std::wstring uid;
    std::wstring output;
    uint32_t bits = 0;
    {
        const wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_GET_CLIENT_ALL_SETTING));
        message >> replyPipe >> uid;
        WRB_LOG(kLogDebug8, L"%s: uid:[%s]", kAllSetting, uid.c_str());
        uid = wrb::CutUid(uid.c_str());
        bits = uid.empty() ? 0 : AppendSettings(output, uid.c_str());
        WRB_LOG(kLogDebug8, L"%s: output:[%s]", kAllSetting, output.c_str());
    }
    if (!wrb::ReplyAndAwaitReader(replyPipe.c_str(), output)) {
        WRB_LOG(kLogError, L"%s - cmdhl_OutputCommand failed.", kAllSetting);
    } else if (bits != 0) {
        dbSetConfFlagW(uid.c_str(), 0, bits);
    }
}
