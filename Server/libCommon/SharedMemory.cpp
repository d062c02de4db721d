#include "SharedMemory.h"

#include <windows.h>

namespace wrb {

std::size_t UsableBytes(const void* view) noexcept {
    MEMORY_BASIC_INFORMATION region{};
    return VirtualQuery(view, &region, sizeof region) != 0 && region.State == MEM_COMMIT ? region.RegionSize : 0;
}

}  // namespace wrb
