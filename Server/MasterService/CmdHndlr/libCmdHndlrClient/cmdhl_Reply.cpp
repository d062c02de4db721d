#include "cmdhl_Reply.h"

#include <algorithm>
#include <new>

#include "CallFacts.h"
#include "Deadline.h"
#include "INICache.h"
#include "IniValues.h"
#include "Patience.h"
#include "PipePath.h"
#include "ServiceClient.h"
#include "ServicePipes.h"

namespace {

// Answers whose peers keep them waiting. They must not take all workers of the host.
constinit wrb::LongWaits slowReplies;

unsigned MostSlowReplies() noexcept {
    constexpr uint32_t kDefaultWorkers = 20;
    constexpr uint32_t kMost = wrb::LongWaits::kMostPlaces;
    if (const uint32_t most = wrb::ServerIniNumber("SlowReplies", 0, kMost)) {
        return most;
    }
    try {
        const uint32_t workers =
            ScanIniCache().readINIInt("INI_SERVER_SECTION", "Command_Handler_Static_Thread_Number", kDefaultWorkers);
        return std::clamp(workers, 2u, kMost) / 2;
    } catch (const std::bad_alloc&) {
        return kDefaultWorkers / 2;
    }
}

template <typename Write>
int WriteAnswer(const wchar_t* pipeName, Write write) {
    wrb::Service peer = wrb::ServiceWithPipeLines(pipeName, kLogNotice5);
    peer.timeoutKey = "ReplyTimeoutSeconds";
    wrb::Patience patience(slowReplies, MostSlowReplies, pipeName == nullptr ? L"" : pipeName);
    peer.patience = &patience;
    if (wrb::IsClosedToAnswers(pipeName)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return wrb::ReportDelivery(peer, WRB_HERE, wrb::Delivery::NotOpened);
    }
    const wrb::Deadline deadline(wrb::TimeoutMilliseconds(peer));
    return wrb::Deliver(peer, WRB_HERE, [&](CPipeClient& client) {
        return write(client, deadline) ? wrb::Delivery::Done : wrb::Delivery::NotWritten;
    });
}

// The result, once the trace and the recording of the command have it.
int Traced(int sent, const void* body, uint64_t bytes) noexcept {
    if (wrb::CallFacts* const facts = wrb::CurrentCallFacts()) {
        facts->NoteAnswer(body, bytes, sent == 1);
    }
    return sent;
}

// Nothing to send opens no write.
bool SendAndAwaitReader(CPipeClient& client, const wrb::Deadline& deadline, std::wstring_view text) {
    uint64_t bytes = text.size() * sizeof(wchar_t);
    if (bytes == 0) {
        return true;
    }
    client.LimitSend(deadline.Remaining());
    if (!client.Send(text.data(), bytes)) {
        return false;
    }
    client.LimitSend(deadline.Remaining());
    return client.AwaitReader();
}

}  // namespace

unsigned cmdhl_OutputCommand(const wchar_t* pipeName, const void* body, uint64_t byteCount) {
    return static_cast<unsigned>(Traced(
        WriteAnswer(pipeName, [&](CPipeClient& client, const wrb::Deadline&) { return client.Send(body, byteCount); }),
        body, byteCount));
}

bool wrb::ReplyAndAwaitReader(const wchar_t* pipeName, std::wstring_view text) {
    // The last piece follows when all others have been read: one more write, which fails, tells a peer that has ended
    // without reading from one that has read everything.
    const std::size_t rest = text.size() - std::min<std::size_t>(text.size(), kPipePieceBytes / sizeof(wchar_t));
    const int sent = WriteAnswer(pipeName, [&](CPipeClient& client, const wrb::Deadline& deadline) {
        return SendAndAwaitReader(client, deadline, text.substr(0, rest)) &&
               SendAndAwaitReader(client, deadline, text.substr(rest));
    });
    return Traced(sent, text.data(), text.size() * sizeof(wchar_t)) == 1;
}
