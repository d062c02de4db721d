// Facts about one agent, read from the database, and the writes that are not scan settings.
//
// Reads by uid carry a `number`, which the server ignores but for the status. All functions return true on success; a
// false leaves the caller's values as they were, with a log line. None throws. A write is a success once its bytes are
// on the pipe. For an agent that the server does not know a number reads as 0, a text as empty, and a record fails.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "DbRequest.h"

namespace wrb {

template <DbCommand command>
bool ReadNumberOf(const wchar_t* uid, uint32_t& value, uint32_t number) noexcept {
    return ReadDbNumber(DbName(command), value, uid, number);
}
template <DbCommand command>
bool ReadTextOf(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return ReadDbText(DbName(command), text, uid, number);
}

// `parameters` holds the request's fields after the reply id, TAB between them; empty for a request without any.
template <DbCommand command>
bool ReadPrebuilt(const std::wstring& parameters, std::wstring& text) noexcept {
    return ReadDbPrebuilt(DbName(command), text, parameters);
}

}  // namespace wrb

// One of the agent's two status words: `number` 0 asks for the first, 1 for the second. An empty or null uid fails
// without asking.
bool dbGetStatusW(const wchar_t* uid, uint32_t& status, uint32_t number = 0) noexcept;

inline constexpr auto dbGetArchitectureW = wrb::ReadNumberOf<DbCommand::GetArchitecture>;
inline constexpr auto dbGetConfFlagW = wrb::ReadNumberOf<DbCommand::GetConfFlag>;
inline constexpr auto dbGetClientPlatW = wrb::ReadNumberOf<DbCommand::GetClientPlat>;

// Name (or full path) of the agent's domain and the domain's uid, TAB between them.
inline constexpr auto dbGetClnDomainNameAndUidW = wrb::ReadTextOf<DbCommand::GetClnDomainNameAndUid>;
inline constexpr auto dbGetClnFullDomainNameAndUidW = wrb::ReadTextOf<DbCommand::GetClnFullDomainNameAndUid>;

inline constexpr auto dbGetComputerNameW = wrb::ReadTextOf<DbCommand::GetComputername>;
inline constexpr auto dbGetIpW = wrb::ReadTextOf<DbCommand::GetIp>;
inline constexpr auto dbGetProgVerW = wrb::ReadTextOf<DbCommand::GetProgVer>;

// uid, kind (0 the password for uninstalling, 1 for unloading) -> the password as the server keeps it.
inline constexpr auto dbGetClientPasswordW = wrb::ReadPrebuilt<DbCommand::GetClientPassword>;

// No fields -> eleven switches, 1 or 0, TAB between them, in the order of the section "ServiceSwitch".
inline constexpr auto dbGetServiceSwitchW = wrb::ReadPrebuilt<DbCommand::GetServiceSwitch>;

inline constexpr auto dbGetIcrcDestScanTypeW = wrb::ReadPrebuilt<DbCommand::GetIcrcDestScanType>;  // uid -> a number
inline constexpr auto dbIsClientExistedW = wrb::ReadPrebuilt<DbCommand::IsClientExisted>;          // uid -> 1 or 0

namespace wrb {

// dbIsClientExistedW as a truth. False, with a log line, also when the request failed.
bool IsKnownAgent(const wchar_t* uid) noexcept;

}  // namespace wrb

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

// A log text of the agent's. The second function takes it in a multibyte code page: null is an empty text, and what is
// not valid in the code page is lost.
bool dbSetSpecialLogW(const wchar_t* uid, uint32_t logType, const wchar_t* text) noexcept;
bool dbSetSpecialLogA(const wchar_t* uid, uint32_t logType, const char* text, uint32_t codePage) noexcept;

// The agent's firewall event counters. `number` and the counters are stored as given; `timeStamp` is 14 digits, a date
// and a time as ConvertDateTime takes them, and is sent as calendar seconds.
bool dbSetCfwLogCountW(const wchar_t* uid, int32_t number, const std::array<uint32_t, 6>& counters,
                       const wchar_t* timeStamp) noexcept;

// The firewall policy that the agent has in force.
bool dbSetCfwActIdW(const wchar_t* uid, const wchar_t* policyId) noexcept;
