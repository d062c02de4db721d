#include "ServiceChecks.h"

#include <windows.h>

#include <chrono>
#include <functional>
#include <optional>

#include "CmdProtocol.h"
#include "Conversation.h"
#include "DbRequest.h"
#include "FaultBoard.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "RunningProgram.h"
#include "ServedPipe.h"
#include "ServerStopEvent.h"
#include "ServicePipes.h"
#include "StopEvent.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kPatienceSeconds = 2;
constexpr double kSlowMilliseconds = 1000;  // more needs somebody to look
constexpr wchar_t kEcho[] = L"status";
constexpr wchar_t kNobody[] = L"00000000-0000-0000-0000-000000000000";

// The milliseconds that it takes; nothing when it fails.
std::optional<double> Timed(const std::function<bool()>& work) {
    const auto start = std::chrono::steady_clock::now();
    if (!work()) {
        return std::nullopt;
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

std::string MillisecondsText(double milliseconds) {
    return WideToUtf8(FormatWide(L"%.1f ms", milliseconds));
}

// A part that answers, but late, is not good.
void AddTime(StatusItem& item, const char* what, double milliseconds) {
    item.text += what + MillisecondsText(milliseconds);
    if (milliseconds > kSlowMilliseconds) {
        item.health = Health::Warning;
        item.text += ", which is slow; 'wrbctl trace' shows the slow commands";
    }
}

bool EchoComesBack() {
    const std::wstring replyPipe = NewReplyPipe();
    CCmdProtocol message;
    message << L"CMDHL_ECHO" << replyPipe << kEcho;
    uint64_t bytes = message.Text().size() * sizeof(wchar_t);
    CPipeServer server;
    CPipeClient client;
    std::wstring answer;
    if (!server.Initial(replyPipe.c_str(), kPatienceSeconds) || !client.Initial(kHostPipe, kPatienceSeconds * 1000) ||
        !client.Send(message.Text().data(), bytes)) {
        return false;
    }
    server.EndWith(client);
    client.Close();
    return server.FetchCmd(answer) && answer == kEcho;
}

bool DatabaseAnswers() {
    const int32_t replyId = NewDbReplyId();
    CPipeServer server;
    std::wstring answer;
    return SendAndRecv(MakeDbRequest(DbName(DbCommand::IsClientExisted), replyId, kNobody), replyId, server,
                       kPatienceSeconds, L"wrbctl status") == 1 &&
           server.FetchCmd(answer) && !answer.empty();
}

// What is known of the program.
StatusItem ItemOf(const char* name, const std::optional<RunningProgram>& program) {
    StatusItem item{.name = name, .health = Health::Good, .text = "running", .details = {}};
    if (program) {
        item.text += program->version.empty() ? "" : ", version " + WideToUtf8(program->version);
        item.text += ", up " + DurationText(program->upSeconds) + ", process " + std::to_string(program->processId) +
                     ", " + std::to_string(program->bytes >> 20) + " MiB";
        item.text += program->handles == 0 ? "" : ", " + std::to_string(program->handles) + " handles";
        item.details["version"] = WideToUtf8(program->version);
        item.details["upSeconds"] = static_cast<Json::Int64>(program->upSeconds);
        item.details["processId"] = program->processId;
        item.details["bytes"] = static_cast<Json::UInt64>(program->bytes);
        item.details["handles"] = program->handles;
        item.details["path"] = WideToUtf8(program->path);
    }
    return item;
}

// A back end that may spoil its answers is never good.
void AddFaults(StatusItem& item) {
    SharedFaultBoard board;
    if (!board.Open(kFaultBoard)) {
        return;
    }
    item.health = Health::Warning;
    item.text += ", FAULTS ARE ALLOWED";
    item.details["faults"] = Json::Value(Json::arrayValue);
    for (const FaultBoard::Entry& entry : board->Entries()) {
        item.text += ", FAULT " + FaultText(entry.rule);
        item.details["faults"].append(FaultText(entry.rule));
    }
}

StatusItem DownItem(const char* name, std::string text) {
    return {.name = name, .health = Health::Down, .text = std::move(text), .details = {}};
}

}  // namespace

StatusItem CheckHost() {
    if (!IsServed(kHostPipe)) {
        return DownItem("host", "not running; start wrbhost");
    }
    StatusItem item = ItemOf("host", FindRunningProgram(kServerStopEvent));
    if (const std::optional<double> milliseconds = Timed(EchoComesBack)) {
        AddTime(item, ", echo in ", *milliseconds);
        item.details["echoMilliseconds"] = *milliseconds;
    } else {
        item.health = Health::Down;
        item.text += ", but an echo does not come back within 2 s";
    }
    return item;
}

StatusItem CheckBackEnd() {
    const std::optional<RunningProgram> program = FindRunningProgram(kBackEndStopEvent);
    if (!program && !IsServed(kDbServerPipe)) {
        return DownItem("back end", "not running; start wrbback serve");
    }
    StatusItem item = ItemOf("back end", program);
    AddFaults(item);
    return item;
}

StatusItems CheckPipes() {
    constexpr struct {
        const wchar_t* pipe;
        const char* name;
    } kPipes[] = {{kDbServerPipe, "database server"},
                  {kLogServicePipe, "log service"},
                  {kLogPoolPipe, "log pool"},
                  {kQmAgentPipe, "management agent"},
                  {kWrbServerPipe, "agent commands"}};
    StatusItems items;
    for (const auto& [pipe, name] : kPipes) {
        const bool isServed = IsServed(pipe);
        StatusItem& item = items.emplace_back();
        item.name = name;
        item.health = isServed ? Health::Good : Health::Down;
        item.text = "pipe " + WideToUtf8(pipe) + (isServed ? " is served" : " is not served");
        item.details["pipe"] = WideToUtf8(pipe);
    }
    return items;
}

StatusItem CheckDatabase() {
    if (!IsServed(kDbServerPipe)) {
        return DownItem("store", "cannot be asked: nobody serves the database server's pipe");
    }
    const std::optional<double> milliseconds = Timed(DatabaseAnswers);
    if (!milliseconds) {
        return DownItem("store", "no answer from the database within 2 s, or an empty one");
    }
    StatusItem item{.name = "store", .health = Health::Good, .text = {}, .details = {}};
    AddTime(item, "answers in ", *milliseconds);
    item.details["milliseconds"] = *milliseconds;
    return item;
}

}  // namespace wrb
