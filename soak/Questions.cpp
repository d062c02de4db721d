#include "Questions.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Text.h"

namespace wrb::soak {
namespace {

constexpr const wchar_t* kScanCommands[] = {
    L"CMDHL_GET_ALL_SCAN_CFG", L"CMDHL_GET_MS_CFG",          L"CMDHL_GET_MS_CFG_EX",  L"CMDHL_GET_SPY_MS_CFG",
    L"CMDHL_GET_RT_CFG",       L"CMDHL_GET_RT_CFG_EX",       L"CMDHL_GET_SPY_RT_CFG", L"CMDHL_GET_PS_CFG",
    L"CMDHL_GET_PS_CFG_EX",    L"CMDHL_GET_SPY_PS_CFG",      L"CMDHL_GET_SN_CFG",     L"CMDHL_GET_SN_CFG_EX",
    L"CMDHL_GET_SPY_SN_CFG",   L"CMDHL_GET_SPY_RESTORE_LIST"};
constexpr const wchar_t* kBundleCommands[] = {
    L"CMDHL_GET_WTP_SETTING",    L"CMDHL_GET_NCIE_SETTING",       L"CMDHL_GET_SAMPLE_SUBMISSION_SETTING",
    L"CMDHL_GET_SABLEX_SETTING", L"CMDHL_GET_FA_RESTORE_SETTING", L"CMDHL_GET_INI_VEXORSETTING",
    L"CMDHL_GET_SERVER_POLICY"};
constexpr const wchar_t* kFactCommands[] = {L"CMDHL_GET_CLN_NET_QUARANTINE_CMD",
                                            L"CMDHL_GET_OPPSTATUS",
                                            L"CMDHL_GET_OPPSETTING",
                                            L"CMDHL_GET_IP_BY_UID",
                                            L"CMDHL_PFW_GET_CLIENT_DOMAIN",
                                            L"CMDHL_PFW_GET_CLIENT_FULL_DOMAIN",
                                            L"CMDHL_GET_INI_WHITELIST",
                                            L"CMDHL_GET_INI_CRITICAL",
                                            L"CMDHL_GET_SCAN_METHOD",
                                            L"CMDHL_GET_INI_SERVICESWITCHSETTING"};
constexpr const wchar_t* kCommandsInParts[] = {L"CMDHL_GET_CLIENT_ALL_SETTING", L"CMDHL_GET_PRODUCT_INFO"};
constexpr const wchar_t* kServerCommands[] = {L"CMDHL_GET_INI_GLOBALSETTING",    L"CMDHL_GET_INI_OTHERUPDATESRC",
                                              L"CMDHL_GET_INI_SCANSERVICELIST",  L"CMDHL_GET_INI_SERVICEMODEL",
                                              L"CMDHL_GET_INI_LOCALSCANSETTING", L"CMDHL_GET_INI_COMPONENT_VER",
                                              L"CMDHL_GET_SERVER_NAME"};
constexpr const wchar_t* kFlagCommands[] = {L"CMDHL_IS_CONFIGFLAGSET", L"CMDHL_GET_CFG_PERMISSION"};
constexpr const wchar_t* kAlertCommands[] = {L"CMDHL_CMDHL_GET_CLN_ALERT_MSG"};

constexpr const wchar_t* kNobody[] = {L""};
constexpr const wchar_t* kNoParameter[] = {L""};
constexpr const wchar_t* kFlags[] = {L"1", L"2", L"4", L"256", L"4294967295"};
constexpr const wchar_t* kAlertTypes[] = {L"0", L"1", L"3", L"5", L"7", L"8", L"15", L"128"};

constexpr wchar_t kProtectedStart[] = L"!CRYPT!";

ProtectionKey KeyOf(const std::wstring& hex) {
    const std::optional<ProtectionKey> key = ParseProtectionKey(hex);
    if (!key) {
        throw std::runtime_error("the server's INI file has no protection key");
    }
    return *key;
}

}  // namespace

Answer Question::AskAgain(CommandTally& tally) const {
    return parameter.empty() ? Ask(tally, command, {uid}) : Ask(tally, command, {uid, parameter});
}

Questions::Questions(const std::wstring& protectionKey) : m_key(KeyOf(protectionKey)) {}

struct Questions::Row {
    std::vector<Question> Questions::*list;
    std::span<const wchar_t* const> commands;
    std::span<const wchar_t* const> uids;
    std::span<const wchar_t* const> parameters;
    bool inParts = false;
};

// In this order: the first row clears bits of the agents, which the flag commands ask for, a moment after its answers.
const Questions::Row Questions::kRows[] = {
    {&Questions::m_facts, kCommandsInParts, kSampleAgents, kNoParameter, true},
    {&Questions::m_scan, kScanCommands, kSampleAgents, kNoParameter},
    {&Questions::m_bundles, kBundleCommands, kSampleAgents, kNoParameter},
    {&Questions::m_facts, kFactCommands, kSampleAgents, kNoParameter},
    {&Questions::m_facts, kServerCommands, kNobody, kNoParameter},
    {&Questions::m_facts, kFlagCommands, kSampleAgents, kFlags},
    {&Questions::m_alerts, kAlertCommands, kSampleAgents, kAlertTypes},
};

void Questions::Learn(CommandTally& tally) {
    for (const Row& row : kRows) {
        Learn(tally, row);
    }
}

void Questions::Learn(CommandTally& tally, const Row& row) {
    bool anyAnswer = false;
    for (const wchar_t* command : row.commands) {
        for (const wchar_t* uid : row.uids) {
            for (const wchar_t* parameter : row.parameters) {
                Question question{command, uid, parameter, row.inParts};
                const Answer answer = question.AskAgain(tally);
                if (!answer.answered) {
                    throw std::runtime_error("the quiet server does not answer " + WideToUtf8(question.command));
                }
                question.answer = Readable(answer.text);
                anyAnswer = anyAnswer || !question.answer.empty();
                (this->*row.list).push_back(std::move(question));
            }
        }
    }
    if (!anyAnswer) {
        throw std::runtime_error("the quiet server answers nothing to " + WideToUtf8(row.commands.front()));
    }
}

std::wstring Questions::Readable(const std::wstring& answer) const {
    std::size_t start = answer.find(kProtectedStart);
    if (start == std::wstring::npos) {
        return answer;
    }
    const StringProtection protection(m_key);
    std::wstring readable = answer.substr(0, start);
    while (start < answer.size()) {
        const std::size_t end = std::min(answer.size(), answer.find(L'\n', start));
        readable += protection.Unprotect(answer.substr(start, end - start)).value_or(L"(cannot be read)");
        start = std::min(answer.size(), answer.find(kProtectedStart, end));
        readable += answer.substr(end, start - end);
    }
    return readable;
}

}  // namespace wrb::soak
