#include "Questions.h"

#include <algorithm>
#include <stdexcept>

#include "Text.h"

namespace wrb::soak {
namespace {

constexpr const wchar_t* kScanCommands[] = {
    L"CMDHL_GET_ALL_SCAN_CFG", L"CMDHL_GET_MS_CFG",          L"CMDHL_GET_MS_CFG_EX",  L"CMDHL_GET_SPY_MS_CFG",
    L"CMDHL_GET_RT_CFG",       L"CMDHL_GET_RT_CFG_EX",       L"CMDHL_GET_SPY_RT_CFG", L"CMDHL_GET_PS_CFG",
    L"CMDHL_GET_PS_CFG_EX",    L"CMDHL_GET_SPY_PS_CFG",      L"CMDHL_GET_SN_CFG",     L"CMDHL_GET_SN_CFG_EX",
    L"CMDHL_GET_SPY_SN_CFG",   L"CMDHL_GET_SPY_RESTORE_LIST"};
constexpr const wchar_t* kBundleCommands[] = {L"CMDHL_GET_WTP_SETTING", L"CMDHL_GET_NCIE_SETTING",
                                              L"CMDHL_GET_SAMPLE_SUBMISSION_SETTING", L"CMDHL_GET_SABLEX_SETTING",
                                              L"CMDHL_GET_FA_RESTORE_SETTING"};
constexpr const wchar_t* kFactCommands[] = {L"CMDHL_GET_CLN_NET_QUARANTINE_CMD",
                                            L"CMDHL_GET_OPPSTATUS",
                                            L"CMDHL_GET_IP_BY_UID",
                                            L"CMDHL_PFW_GET_CLIENT_DOMAIN",
                                            L"CMDHL_PFW_GET_CLIENT_FULL_DOMAIN",
                                            L"CMDHL_GET_INI_WHITELIST",
                                            L"CMDHL_GET_SCAN_METHOD",
                                            L"CMDHL_GET_INI_SERVICESWITCHSETTING"};
constexpr const wchar_t* kAlertCommands[] = {L"CMDHL_CMDHL_GET_CLN_ALERT_MSG"};
constexpr const wchar_t* kNoParameter[] = {L""};
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

void Questions::Learn(CommandTally& tally) {
    m_scan = Answered(tally, kScanCommands, kNoParameter);
    m_bundles = Answered(tally, kBundleCommands, kNoParameter);
    m_facts = Answered(tally, kFactCommands, kNoParameter);
    m_alerts = Answered(tally, kAlertCommands, kAlertTypes);
    for (const auto* questions : {&m_scan, &m_bundles, &m_facts, &m_alerts}) {
        if (std::ranges::none_of(*questions, [](const Question& question) { return !question.answer.empty(); })) {
            throw std::runtime_error("the quiet server answers nothing to " + WideToUtf8(questions->front().command));
        }
    }
}

std::vector<Question> Questions::Answered(CommandTally& tally, std::span<const wchar_t* const> commands,
                                          std::span<const wchar_t* const> parameters) const {
    std::vector<Question> questions;
    for (const wchar_t* command : commands) {
        for (const wchar_t* uid : kSampleAgents) {
            for (const wchar_t* parameter : parameters) {
                Question& question = questions.emplace_back(Question{command, uid, parameter, {}});
                const Answer answer = question.AskAgain(tally);
                if (!answer.answered) {
                    throw std::runtime_error("the quiet server does not answer " + WideToUtf8(question.command));
                }
                question.answer = Readable(answer.text);
            }
        }
    }
    return questions;
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
