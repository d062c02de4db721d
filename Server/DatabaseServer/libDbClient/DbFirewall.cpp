#include "DbFirewall.h"

#include <string>

#include "CalendarTime.h"
#include "DbRequest.h"
#include "DebugLog.h"

bool dbSetCfwLogCountW(const wchar_t* uid, int32_t number, const std::array<uint32_t, 6>& counters,
                       const wchar_t* timeStamp) noexcept {
    WRB_LOG(kLogDebug, L"%s - >>>", L"dbSetCfwLogCountW");
    return wrb::GuardCall(L"dbSetCfwLogCountW", [&] {
        const std::wstring stamp(timeStamp == nullptr ? L"" : timeStamp);
        const std::wstring time = stamp.size() > 8 ? stamp.substr(8, 6) : std::wstring();
        const int64_t seconds = ConvertDateTime(stamp.substr(0, 8).c_str(), time.c_str(), 0);
        CCmdProtocol request = wrb::MakeDbRequest(wrb::DbName(DbCommand::SetCfwLogCount), kDbNoReplyId, uid, number);
        for (const uint32_t counter : counters) {
            request << counter;
        }
        request << std::to_wstring(seconds);  // 64 bits wide: the text form has no number of that width
        return wrb::Send(request, L"") == 1;
    });
}

bool dbSetCfwActIdW(const wchar_t* uid, const wchar_t* policyId) noexcept {
    return wrb::WriteDb(wrb::DbName(DbCommand::SetCfwActId), uid, policyId);
}
