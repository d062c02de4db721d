#include "AgentFacts.h"

#include <algorithm>
#include <optional>

#include "Clock.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "IniText.h"
#include "Text.h"
#include "cmdhm_Common.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Others.cpp"

namespace {

constexpr uint32_t kSecondStatusWord = 1;
constexpr uint32_t kIsolate = 0x1;
constexpr uint32_t kRelease = 0x2;
constexpr uint32_t kOppInForce = 1;
constexpr uint32_t kServerAuthLog = 1;  // the log type in the database
constexpr std::size_t kMostLogCharacters = 4096;

// Nothing for an agent that the database does not know: dbGet... would give 0. An empty uid is not asked for.
template <DbCommand command>
std::optional<uint32_t> NumberOfKnownAgent(const wchar_t* caller, const wchar_t* uid, uint32_t number = 0) {
    const std::wstring agent = wrb::CutUid(uid);
    if (agent.empty()) {
        WRB_LOG(kLogError, L"%s - UID is empty", caller);
        return std::nullopt;
    }
    std::wstring text;
    if (!wrb::ReadTextOf<command>(agent.c_str(), text, number) || text.empty()) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(wrb::ParseInt64(text));
}

struct OutbreakPrevention {
    uint32_t status = 0;
    uint32_t end = 0;  // calendar second; 0: none
};

// Both are 0 once the end has passed.
std::optional<OutbreakPrevention> ReadOpp(const wchar_t* uid) {
    OutbreakPrevention opp;
    if (!dbGetOppStatusW(wrb::CutUid(uid).c_str(), opp.status, opp.end)) {
        return std::nullopt;
    }
    const bool hasPassed = opp.end != 0 && opp.end <= wrb::SystemClock().CalendarSeconds();
    return hasPassed ? OutbreakPrevention() : opp;
}

}  // namespace

bool wrb::GetQuarantineCommand(std::wstring& output, const wchar_t* uid) {
    const auto status =
        NumberOfKnownAgent<DbCommand::GetStatus>(L"cmdhl_GetClnNetQuarantineCmd", uid, kSecondStatusWord);
    if (status) {
        output = (*status & kIsolate) != 0 ? L"1" : (*status & kRelease) != 0 ? L"2" : L"0";
    }
    return status.has_value();
}

bool wrb::GetOppStatus(std::wstring& output, const wchar_t* uid) {
    const auto opp = ReadOpp(uid);
    if (opp) {
        output = std::to_wstring(opp->status) + L'\t' + std::to_wstring(opp->end);
    }
    return opp.has_value();
}

bool wrb::GetOppSetting(std::wstring& output, const wchar_t* uid) {
    constexpr wchar_t kSection[] = L"INI_OPP_SECTION";
    const auto opp = ReadOpp(uid);
    if (!opp) {
        return false;
    }
    if (opp->status == kOppInForce) {
        return GetIniSection(output, kSection);
    }
    AppendIniSection(output, kSection);
    return true;
}

bool wrb::IsConfigFlagSet(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields) {
    const uint32_t mask = TakeUnsigned(fields);
    const auto changed = NumberOfKnownAgent<DbCommand::GetConfFlag>(L"cmdhl_IsConfigFlagSet", uid);
    if (changed) {
        output = (*changed & mask) != 0 ? L"1" : L"0";
    }
    return changed.has_value();
}

bool wrb::StoreServerAuthLog(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields) {
    std::wstring text;
    fields >> text;
    text.resize(std::min(text.size(), kMostLogCharacters));
    const bool sent = dbSetSpecialLogW(CutUid(uid).c_str(), kServerAuthLog, text.c_str());
    output = sent ? L"1" : L"0";
    return sent;
}

void cmdhl_PFWSetPolicyId(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_SET_POLICY_ID));
    std::wstring uid;
    std::wstring policyId;
    message >> uid >> policyId;
    WRB_LOG(kLogDebug8, L"cmdhl_PFWSetPolicyId: uid:[%s]", uid.c_str());
    call.ReportResult(dbSetCfwActIdW(wrb::CutUid(uid.c_str()).c_str(), policyId.c_str()));
}
