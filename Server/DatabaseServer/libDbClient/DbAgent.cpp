#include "DbAgent.h"

#include <windows.h>

#include "CalendarTime.h"
#include "DebugLog.h"
#include "SystemText.h"
#include "Text.h"

using wrb::DbName;
using wrb::WriteDb;

bool dbGetStatusW(const wchar_t* uid, uint32_t& status, uint32_t number) noexcept {
    if (uid == nullptr || *uid == L'\0') {
        WRB_LOG(kLogError, L"%s - UID is empty", L"dbGetStatusW");
        return false;
    }
    return wrb::ReadDbNumber(DbName(DbCommand::GetStatus), status, uid, number);
}

bool wrb::IsKnownAgent(const wchar_t* uid) noexcept {
    return GuardCall(WRB_HERE, L"IsKnownAgent", [&] {
        std::wstring answer;
        return dbIsClientExistedW(uid == nullptr ? L"" : uid, answer) && ParseInt64(answer) == 1;
    });
}

bool dbGetOppStatusW(const wchar_t* uid, uint32_t& status, uint32_t& endTime, uint32_t number) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbGetOppStatusW", [&] {
        CCmdProtocol fields;
        if (!wrb::AskDbRecord(DbName(DbCommand::GetOppStatus), fields, uid, number)) {
            return false;
        }
        for (uint32_t* const value : {&status, &endTime}) {
            std::wstring text;  // CCmdProtocol reads numbers as signed
            fields >> text;
            *value = static_cast<uint32_t>(wrb::ParseInt64(text));
        }
        return true;
    });
}

bool dbGetPrivilegeW(const wchar_t* uid, wrb::DbPrivilege& privilege, uint32_t number) noexcept {
    return wrb::ReadDbNumbers(DbName(DbCommand::GetPrivilege), uid, number, privilege.word1, privilege.word2);
}

bool dbSetPrivilegeW(const wchar_t* uid, const wrb::DbPrivilege& value, const wrb::DbPrivilege& mask) noexcept {
    return WriteDb(DbName(DbCommand::SetPrivilege), uid, value.word1, mask.word1, value.word2, mask.word2);
}

bool dbSetStatusW(const wchar_t* uid, uint32_t word1, uint32_t word2, uint32_t number) noexcept {
    return WriteDb(DbName(DbCommand::SetStatus), uid, word1, word2, number);
}

bool dbSetConfFlagW(const wchar_t* uid, uint32_t bitsToSet, uint32_t bitsToClear, uint32_t number) noexcept {
    return WriteDb(DbName(DbCommand::SetConfFlag), uid, bitsToSet, bitsToClear, number);
}

bool dbSetAllConfFlgW(uint32_t bitsToSet, uint32_t bitsToClear) noexcept {
    return WriteDb(DbName(DbCommand::SetAllConfFlg), bitsToSet, bitsToClear);
}

bool dbSetSpecialLogW(const wchar_t* uid, uint32_t logType, const wchar_t* text) noexcept {
    return WriteDb(DbName(DbCommand::SetSpecialLog), uid, logType, text);
}

bool dbSetSpecialLogA(const wchar_t* uid, uint32_t logType, const char* text, uint32_t codePage) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbSetSpecialLogA", [&] {
        const char* bytes = text == nullptr ? "" : text;
        // The count includes the terminator, so that it is 0 only for a failure.
        const int count = MultiByteToWideChar(codePage, 0, bytes, -1, nullptr, 0);
        std::wstring wide(static_cast<std::size_t>(count), L'\0');
        if (count == 0 || MultiByteToWideChar(codePage, 0, bytes, -1, wide.data(), count) == 0) {
            const DWORD error = GetLastError();
            WRB_LOG(kLogError, L"%s - cannot convert from code page %u: %s", L"dbSetSpecialLogA", codePage,
                    wrb::WideSystemText(error).c_str());
            return false;
        }
        return dbSetSpecialLogW(uid, logType, wide.c_str());
    });
}

bool dbSetCfwLogCountW(const wchar_t* uid, int32_t number, const std::array<uint32_t, 6>& counters,
                       const wchar_t* timeStamp) noexcept {
    WRB_LOG(kLogDebug, L"%s - >>>", L"dbSetCfwLogCountW");
    return wrb::GuardCall(WRB_HERE, L"dbSetCfwLogCountW", [&] {
        const std::wstring stamp(timeStamp == nullptr ? L"" : timeStamp);
        const std::wstring time = stamp.size() > 8 ? stamp.substr(8, 6) : std::wstring();
        const int64_t seconds = ConvertDateTime(stamp.substr(0, 8).c_str(), time.c_str(), 0);
        CCmdProtocol request = wrb::MakeDbRequest(DbName(DbCommand::SetCfwLogCount), kDbNoReplyId, uid, number);
        for (const uint32_t counter : counters) {
            request << counter;
        }
        request << std::to_wstring(seconds);  // 64 bits wide: the text form has no number of that width
        return wrb::Send(request, L"") == 1;
    });
}

bool dbSetCfwActIdW(const wchar_t* uid, const wchar_t* policyId) noexcept {
    return WriteDb(DbName(DbCommand::SetCfwActId), uid, policyId);
}
