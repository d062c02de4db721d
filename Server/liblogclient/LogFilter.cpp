#include "LogFilter.h"

#include <new>

#include "LastError.h"
#include "ServerAccess.h"
#include "SharedMemory.h"

namespace wrb {
namespace {

constexpr DWORD kAccess = FILE_MAP_READ | FILE_MAP_WRITE;

// Opens the section when it exists. A process that may not create it may still open it.
KernelHandle OpenSection() noexcept {
    ServerAccess access(OtherAccounts::ReadAndWrite, true);
    if (access.Attributes() != nullptr) {
        KernelHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, access.Attributes(), PAGE_READWRITE, 0,
                                                sizeof(uint32_t), kLogFilterSection));
        if (section) {
            return section;
        }
    }
    return KernelHandle(OpenFileMappingW(kAccess, TRUE, kLogFilterSection));
}

}  // namespace

constinit std::atomic<LogFilter*> LogFilter::s_shared{nullptr};

LogFilter& LogFilter::MakeShared() noexcept {
    const KeepLastError keep;  // before the static: its guard may wait for another thread
    alignas(LogFilter) static unsigned char storage[sizeof(LogFilter)];
    static LogFilter* const filter = new (storage) LogFilter;
    s_shared.store(filter, std::memory_order_release);
    return *filter;
}

LogFilter::LogFilter() noexcept {
    m_section = OpenSection();
    if (m_section) {
        m_view = MappedView(MapViewOfFile(m_section.Get(), kAccess, 0, 0, sizeof(uint32_t)));
    }
    if (m_view && UsableBytes(m_view.Get()) < sizeof(uint32_t)) {
        m_view.Reset();
    }
    if (m_view) {
        m_word = static_cast<uint32_t*>(m_view.Get());
    }
}

bool LogFilter::Set(uint32_t word) noexcept {
    if (!m_view) {
        return false;
    }
    std::atomic_ref<uint32_t>(*m_word).store(word, std::memory_order_relaxed);
    return true;
}

}  // namespace wrb
