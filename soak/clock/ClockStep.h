// How far the calendar clock of the host's command library is stepped: one number that two programs share.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "Handle.h"

namespace wrb::soak {

class ClockStep {
  public:
    // The first one makes the number, 0. Without it, which only happens when memory is short, the clock is not stepped.
    ClockStep()
        : m_section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(int64_t), kName)),
          m_view(MapViewOfFile(m_section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(int64_t))) {}

    void Step(int64_t seconds) {
        if (m_view) {
            *Number() += seconds;
        }
    }
    int64_t Seconds() const { return m_view ? Number()->load() : 0; }

  private:
    static constexpr wchar_t kName[] = L"wrb_soak_clock_step";

    std::atomic<int64_t>* Number() const { return static_cast<std::atomic<int64_t>*>(m_view.Get()); }

    KernelHandle m_section;
    MappedView m_view;
};

}  // namespace wrb::soak
