#include "ServiceClient.h"

#include <windows.h>

#include "CmdProtocol.h"
#include "DbGuard.h"
#include "MsgSerializer.h"
#include "PipeClient.h"

namespace wrb {
namespace {

bool Report(const Service& service, const wchar_t* format, DWORD error) {
    if (service.namesPipe) {
        WRB_LOG(service.level, format, service.pipe, error);
    } else {
        WRB_LOG(service.level, format, error);
    }
    return false;
}

bool SendBytes(const Service& service, CPipeClient& client, const void* bytes, uint64_t byteCount) {
    return client.Send(bytes, byteCount) || Report(service, service.sendFailed, GetLastError());
}

bool SendMessageBytes(const Service& service, CPipeClient& client, CMsgSerializer& message, SentBlock after) {
    if (!message.Finalize()) {
        WRB_LOG(kLogError, L"%s - cannot finalize %s", L"SendToService", message.Name().c_str());
        return false;
    }
    const uint32_t size = message.GetSize();
    if (after == SentBlock::Kept) {
        return SendBytes(service, client, message.Data(), size);
    }
    const Block block = message.DetachBlock();
    return SendBytes(service, client, block.get(), size);
}

template <typename Write>
int Deliver(const Service& service, Write write) noexcept {
    return GuardDbCall(L"SendToService", [&] {
        CPipeClient client;
        const bool written =
            client.Initial(service.pipe) ? write(client) : Report(service, service.openFailed, GetLastError());
        return written ? 1 : 0;
    });
}

}  // namespace

int SendToService(const Service& service, const void* bytes, uint64_t byteCount) noexcept {
    return Deliver(service, [&](CPipeClient& client) { return SendBytes(service, client, bytes, byteCount); });
}

int SendToService(const Service& service, const CCmdProtocol& text) noexcept {
    const std::wstring_view all = text.Text();
    return SendToService(service, all.data(), (all.size() + 1) * sizeof(wchar_t));
}

int SendToService(const Service& service, CMsgSerializer& message, SentBlock block) noexcept {
    const int sent =
        Deliver(service, [&](CPipeClient& client) { return SendMessageBytes(service, client, message, block); });
    if (sent != 1) {
        message.DiscardSentFile();
    }
    return sent;
}

}  // namespace wrb
