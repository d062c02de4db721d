#include "CounterSection.h"

#include <atomic>

#include "CounterUpdates.h"
#include "NamedMutex.h"
#include "ServerAccess.h"
#include "SharedMemory.h"

namespace wrb {
namespace {

constexpr DWORD kAttachWaitMilliseconds = 50;

uint32_t Number(const uint32_t& shared) noexcept {
    return std::atomic_ref<uint32_t>(const_cast<uint32_t&>(shared)).load(std::memory_order_acquire);
}

// The section of that name may have any size and content. The smallest is one page, which holds the header.
bool IsCounterBlock(const void* view) noexcept {
    const auto& block = *static_cast<const HandlerCounterBlock*>(view);
    return UsableBytes(view) >= sizeof block && Number(block.signature) == kCounterSignature &&
           Number(block.version) == kCounterVersion && Number(block.size) == sizeof(HandlerCounterBlock) &&
           Number(block.slotCount) == kCounterSlots;
}

// What a process makes without the mutex may be seen before its header is written.
bool IsBeingMade(const void* view) noexcept {
    const auto& block = *static_cast<const HandlerCounterBlock*>(view);
    return UsableBytes(view) >= sizeof block &&
           (Number(block.signature) | Number(block.version) | Number(block.size) | Number(block.slotCount)) == 0;
}

// The signature is written last: until then a reader sees no block.
void WriteHeader(HandlerCounterBlock& block) noexcept {
    block.version = kCounterVersion;
    block.size = sizeof block;
    block.slotCount = kCounterSlots;
    block.bucketCount = kTimeBuckets;
    block.sampleCount = kCounterSamples;
    std::atomic_ref<uint32_t>(block.signature).store(kCounterSignature, std::memory_order_release);
}

// ERROR_INVALID_HANDLE: the name belongs to an object of another kind.
CounterAttach Refused(uint32_t error) noexcept {
    return error == ERROR_INVALID_HANDLE ? CounterAttach::Foreign : CounterAttach::Failed;
}

CounterAttach Fail(uint32_t& error) noexcept {
    error = GetLastError();
    return CounterAttach::Failed;
}

}  // namespace

const wchar_t* CounterAttachText(CounterAttach result) noexcept {
    switch (result) {
        case CounterAttach::Attached:
            return L"attached";
        case CounterAttach::Missing:
            return L"no counter block exists: the host is not running";
        case CounterAttach::Foreign:
            return L"the counter block is of another version, or is none";
        case CounterAttach::Failed:
            break;
    }
    return L"the counter block cannot be opened";
}

CounterAttach CounterSection::Open(const CounterNames& names, uint32_t& error) noexcept {
    error = ERROR_SUCCESS;
    const bool wasAttached = static_cast<bool>(m_view);
    if (!m_mutex) {
        m_mutex = OpenNamedMutex(names.mutex);
        if (!m_mutex) {
            return Fail(error);
        }
    }
    const CounterAttach result = OpenUnderMutex(names, error);
    if (wasAttached) {
        return CounterAttach::Attached;  // calls that run now use the block
    }
    if (result != CounterAttach::Attached) {
        Close();
    }
    return result;
}

CounterAttach CounterSection::OpenUnderMutex(const CounterNames& names, uint32_t& error) noexcept {
    // Keeps two processes that start from zeroing each other's first calls. A start goes on without it: nobody who
    // holds the mutex can keep the server from starting.
    const NamedMutexLock lock(m_mutex.Get(), kAttachWaitMilliseconds);
    ServerAccess holders(OtherAccounts::Nothing);
    ServerAccess readers(OtherAccounts::Read);
    if (holders.Attributes() == nullptr || readers.Attributes() == nullptr) {
        return Fail(error);
    }
    const CounterAttach result = m_view ? CounterAttach::Attached : Map(names.section, readers.Attributes(), error);
    if (result == CounterAttach::Attached && BecomesOnlyHolder(names.holder, holders.Attributes())) {
        ZeroCounters(*Block());
    }
    return result;
}

CounterAttach CounterSection::Map(const wchar_t* name, SECURITY_ATTRIBUTES* attributes, uint32_t& error) noexcept {
    const HANDLE section = CreateFileMappingW(INVALID_HANDLE_VALUE, attributes, PAGE_READWRITE, 0,
                                              static_cast<DWORD>(sizeof(HandlerCounterBlock)), name);
    const DWORD creation = GetLastError();
    m_section.Reset(section);
    if (!m_section) {
        error = creation;
        return Refused(error);
    }
    m_view.Reset(MapViewOfFile(m_section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 0));
    if (!m_view) {
        return Fail(error);
    }
    if (creation != ERROR_ALREADY_EXISTS || IsBeingMade(m_view.Get())) {
        WriteHeader(*Block());
    }
    return IsCounterBlock(m_view.Get()) ? CounterAttach::Attached : CounterAttach::Foreign;
}

// The section cannot tell, as readers hold it, too. An event that cannot be made may belong to another process.
bool CounterSection::BecomesOnlyHolder(const wchar_t* name, SECURITY_ATTRIBUTES* attributes) noexcept {
    m_holder.Reset();
    const HANDLE event = CreateEventW(attributes, TRUE, FALSE, name);
    const bool isOnly = event != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
    m_holder.Reset(event);
    return isOnly;
}

void CounterSection::Close() noexcept {
    m_view.Reset();
    m_section.Reset();
    m_holder.Reset();
    m_mutex.Reset();
}

CounterAttach CounterView::Attach(DWORD access, uint32_t& error, const wchar_t* sectionName) noexcept {
    error = ERROR_SUCCESS;
    m_view.Reset();
    m_section.Reset(OpenFileMappingW(access, FALSE, sectionName));
    if (!m_section) {
        Fail(error);
        return error == ERROR_FILE_NOT_FOUND ? CounterAttach::Missing : Refused(error);
    }
    MappedView view(MapViewOfFile(m_section.Get(), access, 0, 0, 0));
    if (!view) {
        return Fail(error);
    }
    if (!IsCounterBlock(view.Get())) {
        return CounterAttach::Foreign;
    }
    m_view = std::move(view);
    return CounterAttach::Attached;
}

HandlerCounterSlot CounterReader::Slot(uint32_t index) const noexcept {
    const HandlerCounterBlock* const block = m_view.Block();
    return block != nullptr && index < kCounterSlots ? ReadCounters(block->slots[index]) : HandlerCounterSlot{};
}

TimeCounts CounterReader::Times(uint32_t index) const noexcept {
    const HandlerCounterBlock* const block = m_view.Block();
    return block != nullptr && index < kCounterSlots ? ReadTimes(block->times[index]) : TimeCounts{};
}

int32_t CounterReader::CallsInProgress() const noexcept {
    const HandlerCounterBlock* const block = m_view.Block();
    return block != nullptr ? ReadCallsInProgress(*block) : 0;
}

Undelivered CounterReader::Undelivered() const noexcept {
    const HandlerCounterBlock* const block = m_view.Block();
    return block != nullptr ? ReadUndelivered(*block) : wrb::Undelivered{};
}

std::vector<CounterSample> CounterReader::Samples() const {
    const HandlerCounterBlock* const block = m_view.Block();
    return block != nullptr ? ReadSamples(*block) : std::vector<CounterSample>();
}

}  // namespace wrb
