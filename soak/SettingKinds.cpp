// An agent's settings are changed, and read back.
#include "CmdProtocol.h"
#include "Soak.h"
#include "Text.h"

namespace wrb::soak {
namespace {

// Each row's key is the one that is read back; the other settings of the message are 1.
constexpr struct {
    const wchar_t* set;
    const wchar_t* get;
    unsigned settings;  // that follow the uid
    unsigned place;     // of the key among them, from 1
    const wchar_t* key;
    bool isSwitch;
} kSetters[] = {
    {L"CMDHL_SET_MS_CFG", L"CMDHL_GET_MS_CFG", 26, 16, L"ExtList", false},
    {L"CMDHL_SET_RT_CFG", L"CMDHL_GET_RT_CFG", 32, 20, L"ExtList", false},
    {L"CMDHL_SET_PS_CFG", L"CMDHL_GET_PS_CFG", 34, 17, L"ExtList", false},
    {L"CMDHL_SET_SN_CFG", L"CMDHL_GET_SN_CFG", 25, 14, L"ExtList", false},
    {L"CMDHL_SET_MS_CFG_EX", L"CMDHL_GET_MS_CFG_EX", 4, 2, L"ExcludedFolder", false},
    {L"CMDHL_SET_RT_CFG_EX", L"CMDHL_GET_RT_CFG_EX", 4, 3, L"ExcludedFile", false},
    {L"CMDHL_SET_PS_CFG_EX", L"CMDHL_GET_PS_CFG_EX", 4, 4, L"ExcludedExt", false},
    {L"CMDHL_SET_SN_CFG_EX", L"CMDHL_GET_SN_CFG_EX", 4, 2, L"ExcludedFolder", false},
    {L"CMDHL_SET_ALL_CFG_EX", L"CMDHL_GET_SN_CFG_EX", 4, 2, L"ExcludedFolder", false},
    {L"CMDHL_SET_SPY_MS_CFG", L"CMDHL_GET_SPY_MS_CFG", 6, 6, L"ExcludeFileExtList", false},
    {L"CMDHL_SET_SPY_RT_CFG", L"CMDHL_GET_SPY_RT_CFG", 4, 4, L"PopSpywareFoundAlert", true},
    {L"CMDHL_SET_SPY_PS_CFG", L"CMDHL_GET_SPY_PS_CFG", 7, 7, L"ExcludeFileExtList", false},
    {L"CMDHL_SET_SPY_SN_CFG", L"CMDHL_GET_SPY_SN_CFG", 7, 7, L"ExcludeFileExtList", false},
};

constexpr ULONGLONG kPatienceMilliseconds = 30'000;

bool Set(Worker& worker, const auto& row, const std::wstring& value) {
    CCmdProtocol fields;
    for (unsigned i = 1; i <= row.settings; ++i) {
        fields << (i == row.place ? value : std::wstring(L"1"));
    }
    return Tell(worker.field.commands, row.set, {SettingAgent(worker.number), std::wstring(fields.Text())});
}

}  // namespace

// A command without an answer runs in parallel to the question that follows, so the question is repeated until the
// answer shows the change.
Verdict SetAndGet(Worker& worker) {
    const auto& row = worker.Pick(kSetters);
    const uint32_t number = worker.NewNumber();
    const std::wstring value =
        row.isSwitch ? std::to_wstring(number % 2) : FormatWide(L"soak %u.%u", worker.number, number);
    const std::wstring wanted = std::wstring(L"\n") + row.key + L'=' + value + L'\n';
    const Worker::Marks marks = worker.MarksNow();
    if (!Set(worker, row, value)) {
        return worker.JudgeDelivery(marks, row.set, false);
    }
    const ULONGLONG end = GetTickCount64() + kPatienceMilliseconds;
    for (;;) {
        const Answer answer = Ask(worker.field.commands, row.get, {SettingAgent(worker.number)});
        const bool seen = answer.text.find(wanted) != std::wstring::npos;
        if (seen) {
            return Verdict::Right;
        }
        if (!worker.field.presence.HostStayed(marks) || !worker.field.presence.StoreStayed(marks)) {
            return Verdict::Empty;
        }
        const bool older = answer.text.find(std::wstring(L"\n") + row.key + L'=') != std::wstring::npos;
        if (!older || GetTickCount64() > end) {
            return worker.Judge(marks, std::wstring(row.set) + L' ' + value, answer, false);
        }
    }
}

}  // namespace wrb::soak
