#include "PerformanceMonitor.h"

#include <array>

#include "CounterCatalog.h"
#include "Text.h"

namespace wrb {
namespace {

// Named so by the SDK's perflib.h; that of MinGW has only the structures.
constexpr ULONG kMultipleInstances = 2;  // PERF_COUNTERSET_MULTI_INSTANCES
constexpr ULONGLONG kByReference = 1;    // PERF_ATTRIB_BY_REFERENCE
constexpr ULONGLONG kNotDisplayed = 2;   // PERF_ATTRIB_NO_DISPLAYABLE

constexpr std::array kCounters{
    MonitorCounter{1, PERF_COUNTER_RAWCOUNT, PERF_DETAIL_NOVICE, true, offsetof(HandlerCounterSlot, calls)},
    MonitorCounter{2, PERF_COUNTER_COUNTER, PERF_DETAIL_NOVICE, true, offsetof(HandlerCounterSlot, calls)},
    MonitorCounter{3, PERF_COUNTER_RAWCOUNT, PERF_DETAIL_NOVICE, true, offsetof(HandlerCounterSlot, failures)},
    MonitorCounter{4, PERF_AVERAGE_BULK, PERF_DETAIL_ADVANCED, true, offsetof(HandlerCounterSlot, total)},
    MonitorCounter{5, PERF_AVERAGE_BASE, PERF_DETAIL_ADVANCED, false, offsetof(HandlerCounterSlot, calls)},
    MonitorCounter{6, PERF_COUNTER_RAWCOUNT, PERF_DETAIL_ADVANCED, true, offsetof(HandlerCounterSlot, maximum)},
};

constexpr ULONG SizeOf(ULONG type) {
    return (type & PERF_SIZE_LARGE) != 0 ? sizeof(uint64_t) : sizeof(uint32_t);
}

}  // namespace

std::span<const MonitorCounter> MonitorCounters() noexcept {
    return kCounters;
}

DWORD PerformanceMonitor::AddCounterSet() noexcept {
    struct {
        PERF_COUNTERSET_INFO set{kMonitorCounterSet, kMonitorProvider, kCounters.size(), kMultipleInstances};
        std::array<PERF_COUNTER_INFO, kCounters.size()> counters{};
    } description;
    for (std::size_t i = 0; i < kCounters.size(); ++i) {
        const MonitorCounter& counter = kCounters[i];
        description.counters[i] = {.CounterId = counter.id,
                                   .Type = counter.type,
                                   .Attrib = kByReference | (counter.displayed ? 0 : kNotDisplayed),
                                   .Size = SizeOf(counter.type),
                                   .DetailLevel = counter.detail,
                                   .Scale = 0,
                                   .Offset = 0};  // the system's to set
    }
    return PerfSetCounterSetInfo(m_provider.Get(), &description.set, sizeof(description));
}

DWORD PerformanceMonitor::AddInstances() {
    for (const CountedRow& row : CountedRows()) {
        PERF_COUNTERSET_INSTANCE* const instance =
            PerfCreateInstance(m_provider.Get(), &kMonitorCounterSet, Utf8ToWide(row.name).c_str(), row.slot);
        if (instance == nullptr) {
            return GetLastError();
        }
        auto* const slot = reinterpret_cast<std::byte*>(&m_view.Block()->slots[row.slot]);
        for (const MonitorCounter& counter : kCounters) {
            const DWORD error = PerfSetCounterRefValue(m_provider.Get(), instance, counter.id, slot + counter.offset);
            if (error != ERROR_SUCCESS) {
                return error;
            }
        }
    }
    return ERROR_SUCCESS;
}

DWORD PerformanceMonitor::Publish(const wchar_t* sectionName) {
    uint32_t refused = ERROR_SUCCESS;
    if (m_view.Attach(FILE_MAP_READ, refused, sectionName) != CounterAttach::Attached) {
        return refused != ERROR_SUCCESS ? refused : ERROR_REVISION_MISMATCH;
    }
    GUID provider = kMonitorProvider;
    PERF_PROVIDER_CONTEXT context{};
    context.ContextSize = sizeof(context);
    DWORD error = PerfStartProviderEx(&provider, &context, m_provider.Receive());
    if (error == ERROR_SUCCESS) {
        error = AddCounterSet();
    }
    if (error == ERROR_SUCCESS) {
        error = AddInstances();
    }
    if (error != ERROR_SUCCESS) {
        m_provider.Reset();
    }
    return error;
}

}  // namespace wrb
