#include "MsgSerializer.h"

#include <windows.h>

#include <cstring>

#include "Clock.h"

namespace {

constexpr std::array<uint8_t, 16> kNewControlBlock = {0x20, 0xAC, 0, 0, 0x01};
constexpr uint32_t kStatusOffset = 8;

}  // namespace

std::wstring wrb::MakeMessageId(const std::wstring& name, uint32_t tickCount, uint32_t processId, uint32_t threadId) {
    const auto text = [](uint32_t number) { return std::to_wstring(static_cast<int32_t>(number)); };
    return L"0105" + name + text(tickCount) + L"_" + text(processId) + L"_" + text(threadId);
}

CMsgSerializer::CMsgSerializer(const wchar_t* name, int)
    : m_control(kNewControlBlock),
      m_name(name == nullptr ? L"NULL" : name),
      m_id(wrb::MakeMessageId(m_name, wrb::SystemClock().TickMilliseconds(), GetCurrentProcessId(),
                              GetCurrentThreadId())) {
    WriteHeader();
}

CMsgSerializer::~CMsgSerializer() = default;

void CMsgSerializer::Reset() {
    Empty();
    WriteHeader();
}

bool CMsgSerializer::Load(const void* bytes, uint32_t length) {
    CSerializer::Load(bytes, length);
    return ReadHeader();
}

bool CMsgSerializer::Attach(uint8_t* bytes, uint32_t length) {
    CSerializer::Attach(bytes, length);
    return ReadHeader();
}

bool CMsgSerializer::Finalize() {
    return true;
}

uint32_t CMsgSerializer::Status() const noexcept {
    uint32_t status;
    std::memcpy(&status, m_control.data() + kStatusOffset, sizeof status);
    return status;
}

void CMsgSerializer::WriteHeader() {
    Buffer() << m_formatValue << std::span<const uint8_t>(m_control) << m_name << m_id;
    SkipToEnd();
}

bool CMsgSerializer::ReadHeader() {
    Buffer() >> m_formatValue;
    ReadControlBlock();
    Buffer() >> m_name >> m_id;
    return true;
}

// A block that is too long is passed over; a short one leaves the rest as in a new message.
void CMsgSerializer::ReadControlBlock() {
    m_control = kNewControlBlock;
    const std::span<const uint8_t> block = TakeBlock();
    if (block.size() <= m_control.size()) {
        std::memcpy(m_control.data(), block.data(), block.size());
    }
}
