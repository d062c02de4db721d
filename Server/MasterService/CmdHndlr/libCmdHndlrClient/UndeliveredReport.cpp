#include "UndeliveredReport.h"

#include "DebugLog.h"

void wrb::ReportUndelivered(CounterCall& call, const wchar_t* handler, const std::wstring& uid,
                            const Undelivered& lost) noexcept {
    call.ReportUndelivered(lost);
    if (lost.rows != 0 || lost.events != 0) {
        WRB_LOG(kLogError, L"%s - not handed over: %u log rows, %u events, uid=%s", handler, lost.rows, lost.events,
                uid.c_str());
    }
}
