// Commands that ask, commands that report, and messages that are no commands.
#include <algorithm>
#include <array>

#include "CmdProtocol.h"
#include "ServicePipes.h"
#include "Soak.h"
#include "Text.h"

namespace wrb::soak {
namespace {

std::wstring LineAt(const std::wstring& text, std::size_t place) {
    const std::size_t start = place == 0 ? 0 : text.rfind(L'\n', place - 1) + 1;
    return L'"' + text.substr(start, text.find(L'\n', place) - start) + L'"';
}

// The first line in which they differ.
std::wstring Difference(const std::wstring& answer, const std::wstring& wanted) {
    const auto place = static_cast<std::size_t>(std::ranges::mismatch(answer, wanted).in1 - answer.begin());
    return LineAt(answer, place) + L" in place of " + LineAt(wanted, place);
}

Verdict AskKnown(Worker& worker, std::span<const Question> questions) {
    const Question& question = worker.Pick(questions);
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = question.AskAgain(worker.field.commands);
    const std::wstring text = worker.field.questions.Readable(answer.text);
    const bool right = text == question.answer;
    if (question.inParts && answer.answered && !right && !worker.field.presence.BackEndStayed(marks)) {
        return Verdict::Empty;
    }
    const std::wstring what = question.command + L' ' + question.uid + L' ' + question.parameter;
    return worker.Judge(marks, right ? what : what + L": " + Difference(text, question.answer), answer, right);
}

// The wait that the agent is told is checked, too.
Verdict AskForPlace(Worker& worker, const std::wstring& uid) {
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", {uid});
    const std::wstring end = std::wstring(L"\t") + kQueryCondition;
    const std::size_t numberEnd = std::min(answer.text.find_first_not_of(L"0123456789", 2), answer.text.size());
    const int32_t wait = ParseInt32(answer.text.substr(std::min<std::size_t>(2, answer.text.size())));
    const bool right = answer.text.starts_with(L"1\t") && numberEnd > 2 && answer.text.substr(numberEnd) == end &&
                       wait <= kLongestWait;
    worker.field.admitted += right && wait == 0 ? 1 : 0;
    return worker.Judge(marks, L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", answer, right);
}

std::string RandomBytes(Worker& worker, uint32_t count) {
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(worker.Random(256));
    }
    return bytes;
}

// Fields that each message has anew.
constexpr wchar_t kAgent[] = L"agent";
constexpr wchar_t kNumber[] = L"number";

struct ReportRow {
    const wchar_t* command;
    std::array<const wchar_t*, 10> fields;
    unsigned feedbackRecords = 0;
};

constexpr ReportRow kReports[] = {
    {L"CMDHL_SET_STATFLAG", {kAgent, kNumber, L"7"}},
    {L"CMDHL_PFW_UPDATE_CFW_COUNT", {kAgent, L"-1", kNumber, L"2", L"3", L"4", L"5", L"6", L"20240131235959", L"1"}},
    {L"CMDHL_ADD_WTC_LOG", {kNumber, kAgent}, 1},
    {L"CMDHL_SET_MAILSCAN_RT_CFG", {kAgent, L"1"}},
    {L"CMDHL_SET_CLIENTCFG_SU_STATUS", {kAgent, L"1"}},
    {L"CMDHL_SET_CLIENTCFG_WARNING_SETTING", {kAgent, L"1", L"0"}},
    {L"CMDHL_PFW_SET_POLICY_ID", {kAgent, kNumber}},
};

constexpr const wchar_t* kUnknown[] = {
    L"CMDHL_NO_SUCH_COMMAND\tpipe\tuid", L"CMDHL_",      L"HELLO\tWORLD OF PIPES",
    L"CMDHL_get_ms_cfg\tpipe\tuid",      L"CMDHL_ECHOX", L"\tCMDHL_ECHO\tpipe\ttext",
};

constexpr const wchar_t* kServicePipes[] = {kDbServerPipe, kLogServicePipe, kLogPoolPipe, kQmAgentPipe, kWrbServerPipe};

constexpr uint32_t kLongestRubbish = 4096;
constexpr std::size_t kLongEcho = 20'000;
constexpr uint32_t kLongestKey = 1u << 20;  // characters
constexpr uint32_t kAskers = 50;            // of each thread

}  // namespace

Verdict AskScanSettings(Worker& worker) {
    return AskKnown(worker, worker.field.questions.ScanSettings());
}

Verdict AskBundle(Worker& worker) {
    return AskKnown(worker, worker.field.questions.Bundles());
}

Verdict AskFacts(Worker& worker) {
    return AskKnown(worker, worker.field.questions.Facts());
}

Verdict AskAlerts(Worker& worker) {
    return AskKnown(worker, worker.field.questions.Alerts());
}

Verdict Echo(Worker& worker) {
    const std::size_t length = worker.Random(4) == 0 ? worker.Random(kLongEcho) : worker.Random(100);
    const std::wstring text =
        FormatWide(L"%u says %u ", worker.number, worker.NewNumber()) + std::wstring(length, L'\xE9');
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_ECHO", {text});
    return worker.Judge(marks, L"CMDHL_ECHO", answer, answer.text == text);
}

// The queue remembers a waiting agent for a while, so the same agents ask again.
Verdict AskTicket(Worker& worker) {
    return AskForPlace(worker, FormatWide(L"50a40000-0000-4000-9%03x-%012x", worker.number, worker.Random(kAskers)));
}

// A key of its own for each message, as long as the pipe takes it: whatever is kept of it must not add up.
Verdict SendOversizedKey(Worker& worker) {
    const std::wstring key = worker.NewUid() + std::wstring(worker.Random(kLongestKey), L'k');
    if (worker.Random(2) == 0) {
        return AskForPlace(worker, key);
    }
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_GET_MS_CFG", {key});
    return worker.Judge(marks, L"CMDHL_GET_MS_CFG of an oversized key", answer, answer.text.empty());
}

// The counters show that they ran.
Verdict Report(Worker& worker) {
    CommandTally& commands = worker.field.commands;
    const Worker::Marks marks = worker.MarksNow();
    switch (worker.Random(64)) {
        case 0:
            return worker.JudgeDelivery(marks, L"CMDHL_SLEEP", Tell(commands, L"CMDHL_SLEEP", {L"well"}));
        case 1:
        case 2:
            return worker.JudgeDelivery(marks, L"CMDHL_CLEAR_INI_CACHE", Tell(commands, L"CMDHL_CLEAR_INI_CACHE", {}));
        default:
            break;
    }
    const ReportRow& row = worker.Pick(kReports);
    const std::wstring number = std::to_wstring(worker.NewNumber());
    CCmdProtocol fields;
    for (const wchar_t* field : row.fields) {
        if (field != nullptr) {
            fields << (field == kAgent ? SettingAgent(worker.number) : field == kNumber ? number : field);
        }
    }
    worker.field.feedbackRecords += row.feedbackRecords;
    return worker.JudgeDelivery(marks, row.command, Tell(commands, row.command, {std::wstring(fields.Text())}));
}

// Stored by the back end as a special log. "0": it could not be sent.
Verdict ReportServerAuth(Worker& worker) {
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_SERVER_AUTH_SET_LOG",
                              {SettingAgent(worker.number), std::to_wstring(worker.NewNumber())});
    const bool right = answer.text == L"1" || (answer.text == L"0" && !worker.field.presence.BackEndStayed(marks));
    return worker.Judge(marks, L"CMDHL_SERVER_AUTH_SET_LOG", answer, right);
}

Verdict SendUnknown(Worker& worker) {
    const Worker::Marks marks = worker.MarksNow();
    const bool sent = DeliverToHost(worker.Pick(kUnknown));
    worker.field.refused += sent ? 1 : 0;
    return worker.JudgeDelivery(marks, L"an unknown command", sent);
}

Verdict SendHostileToHost(Worker& worker) {
    Field& field = worker.field;
    const Worker::Marks marks = worker.MarksNow();
    bool sent = false;
    switch (worker.Random(6)) {
        case 0:
            sent = DeliverToHost({});
            break;
        case 1: {
            const std::string bytes = "\1" + RandomBytes(worker, worker.Random(kLongestRubbish));
            sent = Deliver(kHostPipe, bytes.data(), bytes.size());
            field.refused += sent ? 1 : 0;
            break;
        }
        case 2:  // no such pipe exists
            sent = Tell(field.commands, L"CMDHL_ECHO", {NewReplyPipe(), L"text"});
            break;
        case 3:  // leaves the pipe name space
            sent = Tell(field.commands, L"CMDHL_ECHO", {L"..\\C:\\soak-must-not-exist", L"text"});
            break;
        case 4:
            sent = Tell(field.commands, L"CMDHL_GET_MS_CFG", {std::wstring(500'000, L'\t')});
            break;
        default:  // the pipe name is too short: ends in an exception
            sent = Tell(field.commands, L"CMDHL_PFW_SET_LOG", {L"short", worker.NewUid(), L"x", L"x", L"1"});
            field.threw += sent ? 1 : 0;
    }
    return worker.JudgeDelivery(marks, L"a hostile message", sent);
}

Verdict SendHostileToBackEnd(Worker& worker) {
    const Worker::Marks marks = worker.MarksNow();
    const std::wstring pipe = worker.Pick(kServicePipes);
    const std::string bytes = RandomBytes(worker, worker.Random(kLongestRubbish));
    if (Deliver(pipe.c_str(), bytes.data(), bytes.size())) {
        return Verdict::Right;
    }
    return worker.field.presence.BackEndStayed(marks) ? worker.Wrong(pipe + L": could not be sent")
                                                      : Verdict::NotDelivered;
}

}  // namespace wrb::soak
