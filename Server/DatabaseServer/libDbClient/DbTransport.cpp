#include "DbTransport.h"

#include <windows.h>

#include <span>
#include <string>

#include "Clock.h"
#include "CmdProtocol.h"
#include "DbApiHeader.h"
#include "DbGuard.h"
#include "DebugLog.h"
#include "MsgSerializer.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "Text.h"

namespace {

// Logged: the step has written a line of its own.
enum class Step { Done, Open, Write, Logged };

// One whole request, which `takeBytes` hands out once the pipe is open: the step that failed, with its cause in
// GetLastError.
template <typename TakeBytes>
Step Deliver(const wchar_t* caller, TakeBytes takeBytes) {
    CPipeClient client;
    if (!client.Initial(kDbServerPipe)) {
        return Step::Open;
    }
    std::span<const uint8_t> request;
    bool requestSent = false;
    if (!takeBytes(request) || SendDbApiHeader(client, caller, request, requestSent) != 1) {
        return Step::Logged;
    }
    return requestSent ? Step::Done : Step::Write;
}

Step DeliverText(const CCmdProtocol& request, const wchar_t* caller) {
    return Deliver(caller, [text = request.Text()](std::span<const uint8_t>& bytes) {
        bytes = {reinterpret_cast<const uint8_t*>(text.data()), (text.size() + 1) * sizeof(wchar_t)};
        return true;
    });
}

// Finalized only now: while the service is down a large message stays whole, and its own.
Step DeliverMessage(CMsgSerializer& message, const wchar_t* caller) {
    return Deliver(caller, [&](std::span<const uint8_t>& bytes) {
        if (!message.Finalize()) {
            WRB_LOG(kLogError, L"[dbSend] cannot finalize %s", message.Name().c_str());
            return false;
        }
        bytes = {message.Data(), message.GetSize()};
        return true;
    });
}

// 1, or 0 after `log` has written the line of the step that failed.
template <typename Log>
int ReportStep(Step step, Log log) {
    const DWORD error = GetLastError();
    if (step == Step::Open || step == Step::Write) {
        log(step == Step::Open, error);
    }
    return step == Step::Done ? 1 : 0;
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

int wrb::Send(const CCmdProtocol& request, const wchar_t* caller) noexcept {
    return GuardDbCall(L"Send", [&] {
        WRB_LOG(kLogDebug, L"[DbClient] Send %s", request.Text().data());
        return ReportStep(DeliverText(request, caller), [](bool opening, DWORD error) {
            WRB_LOG(kLogError, opening ? L"Initial pipe client failed! err=%d" : L"pipe send failed!. err=%d", error);
        });
    });
}

int wrb::SendAndRecv(const CCmdProtocol& request, int32_t replyId, CPipeServer& server, uint32_t timeoutSeconds,
                     const wchar_t* caller) noexcept {
    return GuardDbCall(L"SendAndRecv", [&] {
        WRB_LOG(kLogDebug, L"[DbClient] SendAndRecv %s", request.Text().data());
        if (!server.Initial(FormatWide(L"DbCln_%d", replyId).c_str(), timeoutSeconds)) {
            WRB_LOG(kLogError, L"%s - Initial pipe server failed", L"SendAndRecv");
            return 0;
        }
        return ReportStep(DeliverText(request, caller), [](bool opening, DWORD error) {
            WRB_LOG(kLogError,
                    opening ? L"%s - Initial pipe client failed with win32 error code [%d]"
                            : L"%s - pipe send failed with win32 error code [%d]",
                    L"SendAndRecv", error);
        });
    });
}

int dbSend(CMsgSerializer& message, const wchar_t* caller) noexcept {
    return wrb::GuardDbCall(L"dbSend", [&] {
        WRB_LOG(kLogDebug, L"[dbSend] Send %s", message.Name().c_str());
        const int sent = ReportStep(DeliverMessage(message, caller), [](bool opening, DWORD error) {
            WRB_LOG(kLogError,
                    opening ? L"[dbSend] Initial pipe client failed! err=%d" : L"[dbSend] pipe send failed!. err=%d",
                    error);
        });
        if (sent != 1) {
            message.DiscardSentFile();
        }
        return sent;
    });
}

int dbSendAndRecv(CMsgSerializer& message, const wchar_t* caller, uint32_t timeoutSeconds) noexcept {
    return wrb::GuardDbCall(L"dbSendAndRecv", [&] {
        CPipeServer server;
        if (!server.Initial(message.Id().c_str(), timeoutSeconds)) {
            WRB_LOG(kLogError, L"[PipeSendAndRecvW] Initial pipe server failed!");
            return 0;
        }
        if (dbSend(message, caller) != 1) {
            const DWORD error = GetLastError();
            WRB_LOG(kLogError, L"[dbSendAndRecv] PipeSendAndRecv Failed! err=%d", error);
            return 0;
        }
        return RecvMessage(server, message);
    });
}
