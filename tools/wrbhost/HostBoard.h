// What the running host shows to, and takes from, another wrbhost: its counters, and how long a stop may take. It lies
// in a section that SYSTEM, the administrators and the host's own account may open.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "Handle.h"

namespace wrb {

enum class HostCount : uint32_t {
    Handled,     // a handler ran
    Refused,     // no command that the library knows
    Threw,       // an exception came out of the library
    Dropped,     // messages that never came in whole, or that there was no memory for
    Waited,      // commands that waited for a worker
    TurnedAway,  // commands that found their lane full, or the host stopping
    Unanswered,  // of those, the ones whose sender could not be told
    NoMemory,    // of the dropped ones and of those that threw, the ones that an allocation failed for
    kCount
};

struct HostBoard {
    std::atomic<uint32_t> stopMilliseconds{0};  // how long the stop may take; 0: as the host was told at its start
    std::atomic<uint32_t> gaveUp{0};            // 1: the host ended with commands running
    std::array<std::atomic<uint64_t>, static_cast<std::size_t>(HostCount::kCount)> counts{};

    void Count(HostCount what) { ++counts[static_cast<std::size_t>(what)]; }

    // "handled 4, refused 1, ...", in the order of the counters.
    std::string Text() const;
};

class SharedHostBoard {
  public:
    // The host's side: a board with nothing on it. False: GetLastError tells.
    bool Create(const wchar_t* name);

    // The other side. False: GetLastError tells; ERROR_FILE_NOT_FOUND when no host runs.
    bool Open(const wchar_t* name);

    HostBoard& operator*() const { return *static_cast<HostBoard*>(m_view.Get()); }
    HostBoard* operator->() const { return static_cast<HostBoard*>(m_view.Get()); }

  private:
    bool Map();

    KernelHandle m_section;
    MappedView m_view;
};

}  // namespace wrb
