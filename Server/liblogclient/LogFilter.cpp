#include "LogFilter.h"

#include <new>

#include "LastError.h"
#include "OpenSecurity.h"

namespace wrb {
namespace {

constexpr DWORD kAccess = FILE_MAP_READ | FILE_MAP_WRITE;

// Opens the section when it exists. A process that may not create it may still open it.
CKernelHandle OpenSection() noexcept {
    tagOpenSecurity security;
    if (InitOpenSecurity(security, true) == nullptr) {
        CKernelHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, &security.attributes, PAGE_READWRITE, 0,
                                                 sizeof(uint32_t), kLogFilterSection));
        if (section) {
            return section;
        }
    }
    return CKernelHandle(OpenFileMappingW(kAccess, TRUE, kLogFilterSection));
}

}  // namespace

constinit std::atomic<CLogFilter*> CLogFilter::s_shared{nullptr};

CLogFilter& CLogFilter::MakeShared() noexcept {
    const CKeepLastError keep;  // from before the static's guard, which may wait for another thread
    alignas(CLogFilter) static unsigned char storage[sizeof(CLogFilter)];
    static CLogFilter* const filter = new (storage) CLogFilter;
    s_shared.store(filter, std::memory_order_release);
    return *filter;
}

CLogFilter::CLogFilter() noexcept {
    m_section = OpenSection();
    if (m_section) {
        m_view = CMappedView(MapViewOfFile(m_section.Get(), kAccess, 0, 0, sizeof(uint32_t)));
    }
    if (m_view) {
        m_word = static_cast<uint32_t*>(m_view.Get());
    }
}

bool CLogFilter::Set(uint32_t word) noexcept {
    if (!m_view) {
        return false;
    }
    std::atomic_ref<uint32_t>(*m_word).store(word, std::memory_order_relaxed);
    return true;
}

}  // namespace wrb
