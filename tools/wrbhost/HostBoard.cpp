#include "HostBoard.h"

#include <new>

#include "AccessList.h"

namespace wrb {
namespace {

constexpr const char* kNames[] = {"handled", "refused",     "threw",      "dropped",
                                  "waited",  "turned away", "unanswered", "out of memory"};
static_assert(std::size(kNames) == static_cast<std::size_t>(HostCount::kCount));
static_assert(std::atomic<uint64_t>::is_always_lock_free, "several processes share them");

}  // namespace

std::string HostBoard::Text() const {
    std::string text;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        text += (i == 0 ? "" : ", ") + std::string(kNames[i]) + " " + std::to_string(counts[i]);
    }
    return text;
}

bool SharedHostBoard::Map() {
    m_view.Reset(MapViewOfFile(m_section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(HostBoard)));
    return static_cast<bool>(m_view);
}

// A board that an earlier host has left to somebody who still looks at it is wiped.
bool SharedHostBoard::Create(const wchar_t* name) {
    AccessList access;
    if (!access.Set({}, L"")) {
        return false;
    }
    m_section.Reset(
        CreateFileMappingW(INVALID_HANDLE_VALUE, access.Attributes(), PAGE_READWRITE, 0, sizeof(HostBoard), name));
    if (!m_section || !Map()) {
        return false;
    }
    new (m_view.Get()) HostBoard();
    return true;
}

bool SharedHostBoard::Open(const wchar_t* name) {
    m_section.Reset(OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, name));
    return m_section && Map();
}

}  // namespace wrb
