#include "LiveBoard.h"

#include <windows.h>

#include <atomic>
#include <cstring>
#include <iterator>
#include <new>

#include "ServerAccess.h"
#include "SharedMemory.h"

namespace wrb {
namespace {

struct Block {
    uint32_t signature;
    uint32_t version;
    uint32_t size;
    uint32_t sequence;  // odd while the state is being written
    LiveState state;
};
static_assert(offsetof(Block, state) == 16);

std::atomic_ref<uint32_t> Sequence(Block& block) noexcept {
    return std::atomic_ref<uint32_t>(block.sequence);
}

Block* BlockOf(const MappedView& view) noexcept {
    return static_cast<Block*>(view.Get());
}

bool IsLiveState(Block& block) noexcept {
    return UsableBytes(&block) >= sizeof block &&
           std::atomic_ref<uint32_t>(block.signature).load(std::memory_order_acquire) == kLiveStateSignature &&
           block.version == kLiveStateVersion && block.size == sizeof(Block);
}

// Whoever made the section may have written texts without an end.
void EndTexts(LiveUploads& uploads) noexcept {
    for (auto* const clients : {&uploads.firstUploading, &uploads.firstWaiting}) {
        for (LiveClient& client : *clients) {
            *std::rbegin(client.uid) = L'\0';
        }
    }
}

}  // namespace

LiveBoard::LiveBoard() noexcept {
    ServerAccess readers(OtherAccounts::Read);
    if (readers.Attributes() == nullptr) {
        return;
    }
    m_section.Reset(CreateFileMappingW(INVALID_HANDLE_VALUE, readers.Attributes(), PAGE_READWRITE, 0, sizeof(Block),
                                       kLiveStateSection));
    if (m_section) {
        m_view.Reset(MapViewOfFile(m_section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(Block)));
    }
    if (m_view && UsableBytes(m_view.Get()) < sizeof(Block)) {
        m_view.Reset();  // somebody else made the section
    }
    if (m_view) {
        Block& block = *BlockOf(m_view);
        block.state = {};  // of an earlier process, when a reader still holds the section
        block.version = kLiveStateVersion;
        block.size = sizeof(Block);
        Sequence(block).store(0);
        std::atomic_ref<uint32_t>(block.signature).store(kLiveStateSignature, std::memory_order_release);
    }
}

template <typename Part>
void LiveBoard::Write(Part LiveState::*part, const Part& value) noexcept {
    if (!m_view) {
        return;
    }
    const std::lock_guard lock(m_lock);
    Block& block = *BlockOf(m_view);
    Sequence(block).fetch_add(1);
    block.state.*part = value;
    Sequence(block).fetch_add(1);
}

void LiveBoard::Show(const LiveUploads& uploads) noexcept {
    Write(&LiveState::uploads, uploads);
}

void LiveBoard::Show(const LiveAlerts& alerts) noexcept {
    Write(&LiveState::alerts, alerts);
}

LiveBoard& TheLiveBoard() noexcept {
    alignas(LiveBoard) static unsigned char memory[sizeof(LiveBoard)];
    static LiveBoard* const board = new (memory) LiveBoard;
    return *board;
}

// A writer that was killed in the middle leaves an odd number: what is there is shown after some tries.
std::optional<LiveState> ReadLiveState() {
    constexpr int kTries = 100;
    const KernelHandle section(OpenFileMappingW(FILE_MAP_READ, FALSE, kLiveStateSection));
    const MappedView view(section ? MapViewOfFile(section.Get(), FILE_MAP_READ, 0, 0, sizeof(Block)) : nullptr);
    if (!view || !IsLiveState(*BlockOf(view))) {
        return std::nullopt;
    }
    Block& block = *BlockOf(view);
    std::optional<LiveState> state(std::in_place);
    for (int i = 0; i < kTries; ++i) {
        const uint32_t before = Sequence(block).load(std::memory_order_acquire);
        std::memcpy(&*state, &block.state, sizeof(LiveState));
        std::atomic_thread_fence(std::memory_order_acquire);
        if (before % 2 == 0 && Sequence(block).load(std::memory_order_relaxed) == before) {
            break;
        }
    }
    EndTexts(state->uploads);
    return state;
}

}  // namespace wrb
