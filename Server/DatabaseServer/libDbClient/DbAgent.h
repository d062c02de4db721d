// Facts about one agent, read from the database, and the writes that are not scan settings or firewall data.
//
// Reads by uid carry a `number` of the caller's, which the server passes over but for the status. All functions return
// true on success; a false leaves the caller's values as they were, with a log line. None throws. A write is a success
// once its bytes are on the pipe. For an agent that the server does not know a number reads as 0, a text as empty, and
// a record fails.
#pragma once

#include <cstdint>
#include <string>

// One of the agent's two status words: `number` 0 asks for the first, 1 for the second. An empty or null uid fails
// without asking.
bool dbGetStatusW(const wchar_t* uid, uint32_t& status, uint32_t number = 0) noexcept;

bool dbGetArchitectureW(const wchar_t* uid, uint32_t& architecture, uint32_t number = 0) noexcept;
bool dbGetConfFlagW(const wchar_t* uid, uint32_t& changedBits, uint32_t number = 0) noexcept;
bool dbGetClientPlatW(const wchar_t* uid, uint32_t& platform, uint32_t number = 0) noexcept;

// Name (or full path) of the agent's domain and the domain's uid, TAB between them.
bool dbGetClnDomainNameAndUidW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;
bool dbGetClnFullDomainNameAndUidW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;

bool dbGetComputerNameW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;
bool dbGetIpW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;
bool dbGetProgVerW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;

// The next four take their request prebuilt: `parameters` holds the request's fields behind the reply id, TAB between
// them, and may be empty for a request without any.

// uid, kind (0 the password for uninstalling, 1 for unloading) -> the password as the server keeps it.
bool dbGetClientPasswordW(const std::wstring& parameters, std::wstring& text) noexcept;

// No fields -> eleven switches, 1 or 0, TAB between them, in the order of the section "ServiceSwitch".
bool dbGetServiceSwitchW(const std::wstring& parameters, std::wstring& text) noexcept;

// uid -> scan type, a number.
bool dbGetIcrcDestScanTypeW(const std::wstring& parameters, std::wstring& text) noexcept;

// uid -> 1 or 0.
bool dbIsClientExistedW(const std::wstring& parameters, std::wstring& text) noexcept;

// Outbreak prevention: 1 while it is in force, and the calendar second at which it ends (0: it does not).
bool dbGetOppStatusW(const wchar_t* uid, uint32_t& status, uint32_t& endTime, uint32_t number = 0) noexcept;

namespace wrb {

// The two option words of what the agent's user may do.
struct DbPrivilege {
    uint32_t word1 = 0;
    uint32_t word2 = 0;
};

}  // namespace wrb

bool dbGetPrivilegeW(const wchar_t* uid, wrb::DbPrivilege& privilege, uint32_t number = 0) noexcept;

// Replaces the bits of each stored word that `mask` names by those of `value`.
bool dbSetPrivilegeW(const wchar_t* uid, const wrb::DbPrivilege& value, const wrb::DbPrivilege& mask) noexcept;

bool dbSetStatusW(const wchar_t* uid, uint32_t word1, uint32_t word2, uint32_t number = 0) noexcept;

// The configuration-changed bits: of one agent, and of all.
bool dbSetConfFlagW(const wchar_t* uid, uint32_t bitsToSet, uint32_t bitsToClear, uint32_t number = 0) noexcept;
bool dbSetAllConfFlgW(uint32_t bitsToSet, uint32_t bitsToClear) noexcept;

// A log text of the agent's. The companion takes it in a multibyte code page; a null text is an empty one, and a text
// that is not valid in the code page loses what is not.
bool dbSetSpecialLogW(const wchar_t* uid, uint32_t logType, const wchar_t* text) noexcept;
bool dbSetSpecialLogA(const wchar_t* uid, uint32_t logType, const char* text, uint32_t codePage) noexcept;
