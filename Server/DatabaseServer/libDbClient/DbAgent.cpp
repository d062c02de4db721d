#include "DbAgent.h"

#include <windows.h>

#include "DbRequest.h"
#include "DebugLog.h"

using wrb::DbName;
using wrb::ReadDbNumber;
using wrb::ReadDbText;
using wrb::WriteDb;

bool dbGetStatusW(const wchar_t* uid, uint32_t& status, uint32_t number) noexcept {
    if (uid == nullptr || *uid == L'\0') {
        WRB_LOG(kLogError, L"%s - UID is empty", L"dbGetStatusW");
        return false;
    }
    return ReadDbNumber(DbName(DbCommand::GetStatus), status, uid, number);
}

bool dbGetArchitectureW(const wchar_t* uid, uint32_t& architecture, uint32_t number) noexcept {
    return ReadDbNumber(DbName(DbCommand::GetArchitecture), architecture, uid, number);
}

bool dbGetConfFlagW(const wchar_t* uid, uint32_t& changedBits, uint32_t number) noexcept {
    return ReadDbNumber(DbName(DbCommand::GetConfFlag), changedBits, uid, number);
}

bool dbGetClientPlatW(const wchar_t* uid, uint32_t& platform, uint32_t number) noexcept {
    return ReadDbNumber(DbName(DbCommand::GetClientPlat), platform, uid, number);
}

bool dbGetClnDomainNameAndUidW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(DbCommand::GetClnDomainNameAndUid), text, uid, number);
}

bool dbGetClnFullDomainNameAndUidW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(DbCommand::GetClnFullDomainNameAndUid), text, uid, number);
}

bool dbGetComputerNameW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(DbCommand::GetComputername), text, uid, number);
}

bool dbGetIpW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(DbCommand::GetIp), text, uid, number);
}

bool dbGetProgVerW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(DbCommand::GetProgVer), text, uid, number);
}

bool dbGetClientPasswordW(const std::wstring& parameters, std::wstring& text) noexcept {
    return wrb::ReadDbPrebuilt(DbName(DbCommand::GetClientPassword), text, parameters);
}

bool dbGetServiceSwitchW(const std::wstring& parameters, std::wstring& text) noexcept {
    return wrb::ReadDbPrebuilt(DbName(DbCommand::GetServiceSwitch), text, parameters);
}

bool dbGetIcrcDestScanTypeW(const std::wstring& parameters, std::wstring& text) noexcept {
    return wrb::ReadDbPrebuilt(DbName(DbCommand::GetIcrcDestScanType), text, parameters);
}

bool dbIsClientExistedW(const std::wstring& parameters, std::wstring& text) noexcept {
    return wrb::ReadDbPrebuilt(DbName(DbCommand::IsClientExisted), text, parameters);
}

bool dbGetOppStatusW(const wchar_t* uid, uint32_t& status, uint32_t& endTime, uint32_t number) noexcept {
    return wrb::ReadDbNumbers(DbName(DbCommand::GetOppStatus), uid, number, status, endTime);
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
    return wrb::GuardCall(L"dbSetSpecialLogA", [&] {
        const char* bytes = text == nullptr ? "" : text;
        // The count includes the terminator, so that it is 0 only for a failure.
        const int count = MultiByteToWideChar(codePage, 0, bytes, -1, nullptr, 0);
        std::wstring wide(static_cast<std::size_t>(count), L'\0');
        if (count == 0 || MultiByteToWideChar(codePage, 0, bytes, -1, wide.data(), count) == 0) {
            const DWORD error = GetLastError();
            WRB_LOG(kLogError, L"%s - cannot convert from code page %u, err=%d", L"dbSetSpecialLogA", codePage, error);
            return false;
        }
        return dbSetSpecialLogW(uid, logType, wide.c_str());
    });
}
