#include "MsgSerializer.h"

#include <windows.h>

#include <cstring>
#include <utility>

#include "Clock.h"
#include "DebugLog.h"
#include "ResultFile.h"
#include "SpillDirectory.h"
#include "SpillFile.h"
#include "SystemText.h"

std::wstring wrb::MakeMessageId(const std::wstring& name, uint32_t tickCount, uint32_t processId, uint32_t threadId) {
    const auto text = [](uint32_t number) { return std::to_wstring(static_cast<int32_t>(number)); };
    return L"0105" + name + text(tickCount) + L"_" + text(processId) + L"_" + text(threadId);
}

CMsgSerializer::CMsgSerializer(const wchar_t* name, int mode)
    : m_name(name == nullptr ? L"NULL" : name),
      m_id(wrb::MakeMessageId(m_name, wrb::SystemClock().TickMilliseconds(), GetCurrentProcessId(),
                              GetCurrentThreadId())),
      m_mapFrom(wrb::ResultFile::kMapFrom) {
    WriteHeader();
    if (mode == kInFile) {
        CreateFileModeFile();
    }
}

CMsgSerializer::~CMsgSerializer() = default;

void CMsgSerializer::Reset() {
    DropContent();
    SetBodyPlace(kBodyInMessage);
    WriteHeader();
}

bool CMsgSerializer::Load(const void* bytes, uint32_t length) {
    DropContent();
    m_sentFile.clear();
    CSerializer::Load(bytes, length);
    return ReadHeader(Source::kMessage);
}

bool CMsgSerializer::Attach(uint8_t* bytes, uint32_t length) {
    DropContent();
    m_sentFile.clear();
    CSerializer::Attach(bytes, length);
    return ReadHeader(Source::kMessage);
}

bool CMsgSerializer::Finalize() {
    if (!InFileMode()) {
        return true;
    }
    if (!m_spill->Close()) {
        WRB_LOG(kLogError, L"%s - [File mode] Failed to write %s", L"CMsgSerializer::Finalize",
                m_spill->Path().c_str());
        return false;
    }
    const std::unique_ptr<wrb::SpillFile> file = std::move(m_spill);
    if (!file->OpenToReceivers()) {
        // A receiver under the same account still gets it.
        const DWORD error = GetLastError();
        WRB_LOG(kLogWarning, L"%s - [File mode] Failed to set the access of %s: %s", L"CMsgSerializer::Finalize",
                file->Path().c_str(), wrb::WideSystemText(error).c_str());
    }
    Reset();
    Buffer() << file->Path();
    SetBodyPlace(kBodyInFile);
    std::memcpy(m_block.get() + kControlOffset, &m_control, sizeof m_control);
    m_sentFile = file->Path();
    file->HandOver();
    return true;
}

void CMsgSerializer::DiscardSentFile() noexcept {
    if (!m_sentFile.empty()) {
        wrb::DeleteSpillFile(m_sentFile);
        m_sentFile.clear();
    }
}

void CMsgSerializer::SetBodyPlace(uint32_t place) noexcept {
    m_control.flags = (m_control.flags & ~(kBodyInMessage | kBodyInFile)) | place;
}

// The buffer lets go of a view before the file that it shows is unmapped.
void CMsgSerializer::DropContent() noexcept {
    Empty();
    m_resultFile.reset();
}

void CMsgSerializer::WriteHeader() {
    Buffer() << m_formatValue << std::span(reinterpret_cast<const uint8_t*>(&m_control), sizeof m_control) << m_name
             << m_id;
    m_position = m_used;
}

bool CMsgSerializer::ReadHeader(Source source) {
    Buffer() >> m_formatValue;
    ReadControlBlock();
    Buffer() >> m_name >> m_id;
    if ((m_control.flags & kBodyInFile) == 0) {
        return true;
    }
    std::wstring path;
    Buffer() >> path;
    // A file that names a file is refused: such a chain could be endless.
    if (source == Source::kMessage && ReadFile(path)) {
        return true;
    }
    m_control.status = kStatusNoResultFile;
    m_position = m_used;
    return false;
}

// A block that is too long is passed over; a short one leaves the rest as in a new message.
void CMsgSerializer::ReadControlBlock() {
    m_control = {};
    const std::span<const uint8_t> block = TakeBlock();
    if (block.size() <= sizeof m_control) {
        std::memcpy(&m_control, block.data(), block.size());
    }
}

bool CMsgSerializer::ReadFile(const std::wstring& path) {
    return TakeFile(path) && ReadHeader(Source::kFile);
}

// Puts the content of the file in the place of the message that named it.
bool CMsgSerializer::TakeFile(const std::wstring& path) {
    auto file = std::make_unique<wrb::ResultFile>();
    if (!file->Open(path)) {
        return false;
    }
    wrb::Block block =
        file->Size() < m_mapFrom ? file->Read() : wrb::Block(file->Map(), wrb::BlockFree{.owned = false});
    if (!block) {
        return false;
    }
    AttachBlock(std::move(block), static_cast<uint32_t>(file->Size()), kAttachedIncrement);
    m_resultFile = std::move(file);
    return true;
}
