#include "DbTransport.h"

#include <windows.h>

#include <span>
#include <string>

#include "CallFacts.h"
#include "CallGuard.h"
#include "Clock.h"
#include "CmdProtocol.h"
#include "DbApiHeader.h"
#include "DebugLog.h"
#include "IniValues.h"
#include "MsgSerializer.h"
#include "PipeServer.h"
#include "ServiceClient.h"
#include "ServicePipes.h"
#include "Text.h"

namespace {

constexpr wrb::Service kTextService = wrb::ServiceWithPlainLines(wrb::kDbServerPipe);
constexpr wrb::Service kAskedService = {wrb::kDbServerPipe,
                                        L"%s - Initial pipe client failed with win32 error code [%d]",
                                        L"%s - pipe send failed with win32 error code [%d]", L"SendAndRecv"};
constexpr wrb::Service kMessageService = {wrb::kDbServerPipe, L"[dbSend] Initial pipe client failed! err=%d",
                                          L"[dbSend] pipe send failed!. err=%d"};

// How much memory the answers of all requests may take, as AnswerMemory counts it.
uint64_t SharedAnswerBytes() noexcept {
    constexpr uint32_t kMostMiB = 1024;
    return uint64_t{wrb::ServerIniNumber("AnswerMemoryInM", wrb::AnswerMemory::kTogether >> 20, kMostMiB)} << 20;
}

// Before the request: the reply pipe stands before it can be answered.
bool OpenReplyPipe(CPipeServer& server, const wchar_t* name, uint32_t timeoutSeconds) {
    server.LimitOthers(SharedAnswerBytes());
    return server.Initial(name, timeoutSeconds);
}

wrb::Delivery WriteFramed(CPipeClient& client, const wchar_t* caller, std::span<const uint8_t> request) {
    if (wrb::CallFacts* const facts = wrb::CurrentCallFacts()) {
        ++facts->requests;
    }
    bool requestSent = false;
    if (SendDbApiHeader(client, caller, request, requestSent) != 1) {
        return wrb::Delivery::Logged;
    }
    return requestSent ? wrb::Delivery::Done : wrb::Delivery::NotWritten;
}

// Finalized only once the pipe is open: while the service is down a large message stays whole, and its own.
wrb::Delivery WriteMessage(CPipeClient& client, CMsgSerializer& message, const wchar_t* caller) {
    if (!message.Finalize()) {
        WRB_LOG(kLogError, L"[dbSend] cannot finalize %s", message.Name().c_str());
        return wrb::Delivery::Logged;
    }
    return WriteFramed(client, caller, {message.Data(), message.GetSize()});
}

// `server`: where the answer is awaited; null without an answer.
int SendMessageToDb(CMsgSerializer& message, const wchar_t* caller, CPipeServer* server) {
    WRB_LOG(kLogDebug, L"[dbSend] Send %s", message.Name().c_str());
    wrb::SentFileGuard file(message);
    return file.Keep(wrb::Deliver(kMessageService, WRB_HERE, [&](CPipeClient& client) {
        if (server != nullptr) {
            server->EndWith(client);
        }
        return WriteMessage(client, message, caller);
    }));
}

int RecvMessage(CPipeServer& server, CMsgSerializer& message) {
    std::string answer;
    if (!server.FetchCmd(answer)) {
        WRB_LOG(kLogError, L"[dbSendAndRecv] PipeServer.FetchCmd Failed!");
        message.DiscardSentFile();
        return 0;
    }
    if (answer.empty()) {
        WRB_LOG(kLogDebug, L"%s - empty answer to %s", L"dbSendAndRecv", message.Name().c_str());
        message.DiscardSentFile();
        return 0;
    }
    if (!message.Load(answer.data(), static_cast<uint32_t>(answer.size()))) {
        WRB_LOG(kLogError, L"%s - cannot load the answer, status=0x%08x", L"dbSendAndRecv", message.Status());
        return 0;
    }
    return 1;
}

}  // namespace

int32_t wrb::NewDbReplyId() {
    return MakeDbReplyId(GetCurrentThreadId(), SystemClock().TickMilliseconds());
}

int wrb::Send(const CCmdProtocol& request, const wchar_t* caller) {
    WRB_LOG(kLogDebug, L"[DbClient] Send %s", request.Text().data());
    return Deliver(kTextService, WRB_HERE,
                   [&](CPipeClient& client) { return WriteFramed(client, caller, BytesOf(request)); });
}

int wrb::SendAndRecv(const CCmdProtocol& request, int32_t replyId, CPipeServer& server, uint32_t timeoutSeconds,
                     const wchar_t* caller) {
    WRB_LOG(kLogDebug, L"[DbClient] SendAndRecv %s", request.Text().data());
    if (!OpenReplyPipe(server, FormatWide(L"DbCln_%d", replyId).c_str(), timeoutSeconds)) {
        WRB_LOG(kLogError, L"%s - Initial pipe server failed", L"SendAndRecv");
        return 0;
    }
    return Deliver(kAskedService, WRB_HERE, [&](CPipeClient& client) {
        server.EndWith(client);
        return WriteFramed(client, caller, BytesOf(request));
    });
}

int dbSend(CMsgSerializer& message, const wchar_t* caller) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbSend", [&] { return SendMessageToDb(message, caller, nullptr); });
}

int wrb::SendAndRecv(CMsgSerializer& message, const wchar_t* caller, uint32_t timeoutSeconds) {
    CPipeServer server;
    if (!OpenReplyPipe(server, message.Id().c_str(), timeoutSeconds)) {
        WRB_LOG(kLogError, L"[PipeSendAndRecvW] Initial pipe server failed!");
        return 0;
    }
    if (SendMessageToDb(message, caller, &server) != 1) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"[dbSendAndRecv] PipeSendAndRecv Failed! err=%d", error);
        return 0;
    }
    return RecvMessage(server, message);
}

int dbSendAndRecv(CMsgSerializer& message, const wchar_t* caller, uint32_t timeoutSeconds) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbSendAndRecv",
                          [&] { return wrb::SendAndRecv(message, caller, timeoutSeconds); });
}
