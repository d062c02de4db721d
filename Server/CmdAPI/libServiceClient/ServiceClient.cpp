#include "ServiceClient.h"

#include "CmdProtocol.h"
#include "IniValues.h"
#include "LastError.h"
#include "MsgSerializer.h"

namespace wrb {
namespace {

constexpr uint32_t kDefaultSeconds = CPipeClient::kDefaultMilliseconds / 1000;
constexpr uint32_t kMostSeconds = 3600;

Delivery WriteBytes(CPipeClient& client, const void* bytes, uint64_t byteCount) {
    return client.Send(bytes, byteCount) ? Delivery::Done : Delivery::NotWritten;
}

Delivery WriteMessage(CPipeClient& client, SourcePlace from, CMsgSerializer& message, SentBlock after) {
    if (!message.Finalize()) {
        WRB_LOG_FROM(kLogError, from.file, from.line, L"%s - cannot finalize %s", L"SendToService",
                     message.Name().c_str());
        return Delivery::Logged;
    }
    const uint32_t size = message.GetSize();
    if (after == SentBlock::Kept) {
        return WriteBytes(client, message.Data(), size);
    }
    Block block = message.DetachBlock();
    const Delivery delivery = WriteBytes(client, block.get(), size);
    const KeepLastError cause;
    block.reset();
    return delivery;
}

}  // namespace

uint32_t TimeoutMilliseconds(const Service& service) noexcept {
    return ServerIniNumber(service.timeoutKey, kDefaultSeconds, kMostSeconds) * 1000;
}

int ReportDelivery(const Service& service, SourcePlace from, Delivery delivery) noexcept {
    const DWORD error = GetLastError();
    if (delivery == Delivery::NotOpened || delivery == Delivery::NotWritten) {
        const wchar_t* const format = delivery == Delivery::NotOpened ? service.openFailed : service.sendFailed;
        if (service.name != nullptr) {
            WRB_LOG_FROM(service.level, from.file, from.line, format, service.name, error);
        } else {
            WRB_LOG_FROM(service.level, from.file, from.line, format, error);
        }
    }
    return delivery == Delivery::Done ? 1 : 0;
}

int SendToService(const Service& service, SourcePlace from, std::span<const uint8_t> bytes) noexcept {
    return Deliver(service, from, [&](CPipeClient& client) { return WriteBytes(client, bytes.data(), bytes.size()); });
}

int SendToService(const Service& service, SourcePlace from, const CCmdProtocol& text) noexcept {
    return SendToService(service, from, BytesOf(text));
}

int SendToService(const Service& service, SourcePlace from, CMsgSerializer& message, SentBlock block) {
    SentFileGuard file(message);
    return file.Keep(
        Deliver(service, from, [&](CPipeClient& client) { return WriteMessage(client, from, message, block); }));
}

std::span<const uint8_t> BytesOf(const CCmdProtocol& text) noexcept {
    const std::wstring_view all = text.Text();
    return {reinterpret_cast<const uint8_t*>(all.data()), (all.size() + 1) * sizeof(wchar_t)};
}

SentFileGuard::~SentFileGuard() {
    if (!m_sent) {
        m_message.DiscardSentFile();
    }
}

}  // namespace wrb
