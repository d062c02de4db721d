#include "FirewallAlert.h"

#include "DebugLog.h"
#include "SRWLock.h"

namespace {

struct Totals {
    uint64_t logs;     // calls
    uint64_t sums[3];  // of the three counts, in the order of InsertOneLog
};

CWrbSRWLock g_lock;
Totals g_totals WRB_GUARDED_BY(g_lock) = {};

Totals Add(uint32_t first, uint32_t second, uint32_t third) noexcept {
    const wrb::ExclusiveGuard guard(g_lock);
    ++g_totals.logs;
    g_totals.sums[0] += first;
    g_totals.sums[1] += second;
    g_totals.sums[2] += third;
    return g_totals;
}

}  // namespace

void InsertOneLog(uint32_t first, uint32_t second, uint32_t third, const wchar_t* timeStamp) noexcept {
    const Totals totals = Add(first, second, third);
    WRB_LOG(kLogDebug, L"%s - at %s: %u, %u, %u; in %I64u logs: %I64u, %I64u, %I64u", L"InsertOneLog", timeStamp, first,
            second, third, totals.logs, totals.sums[0], totals.sums[1], totals.sums[2]);
}
