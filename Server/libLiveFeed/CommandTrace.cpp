#include "CommandTrace.h"

#include "Handle.h"
#include "ServerAccess.h"
#include "SharedMemory.h"

namespace wrb {
namespace {

// The handle keeps the section's name. Neither is ever given back: a command may end at any time.
TraceFeed* MapFeed() noexcept {
    ServerAccess access(OtherAccounts::Nothing);
    if (access.Attributes() == nullptr) {
        return nullptr;
    }
    KernelHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, access.Attributes(), PAGE_READWRITE, 0,
                                            static_cast<DWORD>(sizeof(TraceFeed)), kTraceSection));
    MappedView view(section ? MapViewOfFile(section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(TraceFeed))
                            : nullptr);
    if (!view || UsableBytes(view.Get()) < sizeof(TraceFeed)) {
        return nullptr;
    }
    static_cast<void>(section.Release());
    return static_cast<TraceFeed*>(view.Release());
}

}  // namespace

TraceFeed* OpenTraceFeed() noexcept {
    static TraceFeed* const feed = MapFeed();
    return feed;
}

}  // namespace wrb
