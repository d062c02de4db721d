// Shows the command counters in the Windows performance monitor: one counter set, an instance for each counted row.
//
// The system reads the values from the shared counter block whenever somebody looks: publishing costs a command
// nothing. What the set is called and what its counters mean, the system learns from docs/performance-counters.man,
// which an administrator registers. Manifest and table agree in GUIDs, identifiers and types.
#pragma once

#include <windows.h>
// After windows.h, whose types they use.
#include <perflib.h>
#include <winperf.h>

#include <cstddef>
#include <span>

#include "CounterSection.h"
#include "Handle.h"

namespace wrb {

inline constexpr GUID kMonitorProvider{0x6d0a0c5e, 0x7c4b, 0x4b57, {0x9c, 0x47, 0x0b, 0x5b, 0x3c, 0x0a, 0x9e, 0x11}};
inline constexpr GUID kMonitorCounterSet{0xb6e1f0d4, 0x30c2, 0x4a4c, {0x8a, 0x55, 0x8f, 0x6e, 0x2d, 0x1b, 0x7c, 0x22}};

struct MonitorCounter {
    ULONG id;
    ULONG type;          // PERF_COUNTER_RAWCOUNT, ...
    ULONG detail;        // PERF_DETAIL_NOVICE or PERF_DETAIL_ADVANCED
    bool displayed;      // false: another counter is divided by it
    std::size_t offset;  // in HandlerCounterSlot, of a number as wide as the type says
};

std::span<const MonitorCounter> MonitorCounters() noexcept;

class PerformanceMonitor {
  public:
    PerformanceMonitor() = default;
    PerformanceMonitor(const PerformanceMonitor&) = delete;
    PerformanceMonitor& operator=(const PerformanceMonitor&) = delete;

    // From now until its end the object publishes the block, which some process must have made. Returns the system's
    // error, ERROR_SUCCESS for none: nothing is published then. Called once.
    DWORD Publish(const wchar_t* sectionName = kCounterSectionName);

  private:
    struct ProviderTraits {
        using Type = HANDLE;
        static HANDLE Empty() noexcept { return nullptr; }
        static void Close(HANDLE provider) noexcept { PerfStopProvider(provider); }  // with its instances
    };

    DWORD AddCounterSet() noexcept;
    DWORD AddInstances();

    CounterView m_view;
    UniqueHandle<ProviderTraits> m_provider;  // goes first: it has addresses in the view
};

}  // namespace wrb
