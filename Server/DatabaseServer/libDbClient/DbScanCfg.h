// Reads of one agent's scan settings.
//
// The functions by scan type fill the members of `values` that their command answers with (ScanGroup.h lists them) and
// leave the others alone. `number` is the request's last field; the server does not use it here. `uid` is cut to 36
// characters where there is a `caller`, which is the asking function's name, for the server's log.
//
// All return true on success; a false leaves the caller's values as they were, but for the two records, with a log
// line. None throws. Waits at most 600 seconds. An agent that the server does not know has an empty text; the other
// functions return false for it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DbAgent.h"
#include "DbAllScanRecord.h"

namespace wrb {

// Asks the group's command (DB_GET_MSCF ... DB_GET_SPYWARE_SNCF) and reads the group's numbers and, of a spyware group
// that has one, its list. The texts of main and exclusion groups come with dbGetExtraW.
bool GetDbScanGroup(const ScanGroup& group, const wchar_t* uid, ScanGroupValues& values, uint32_t number = 0) noexcept;

// The same for a group that is known when the program is compiled.
template <ScanType type, ScanGroupKind kind>
bool GetDbScan(const wchar_t* uid, ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(type, kind), uid, values, number);
}

template <DbCommand command, typename Record>
bool ReadRecordOf(const wchar_t* uid, Record& record, const wchar_t* caller) noexcept {
    return ReadDbMessage(command, uid, caller, record);
}

}  // namespace wrb

inline constexpr auto dbGetMscfW = wrb::GetDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbGetRtcfW = wrb::GetDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto dbGetPscfW = wrb::GetDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbGetSncfW = wrb::GetDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto dbGetSpywareMscfW = wrb::GetDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbGetSpywareRtcfW = wrb::GetDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbGetSpywarePscfW = wrb::GetDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbGetSpywareSncfW = wrb::GetDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;

// All scan settings of an agent: the second record is worth asking for when the first has hasExtra.
inline constexpr auto dbGetClnAllScanCfgW = wrb::ReadRecordOf<DbCommand::ClientGetAllScanCfg, wrb::AllScanConfig>;
inline constexpr auto dbGetClnAllScanExW = wrb::ReadRecordOf<DbCommand::ClientGetAllScanEx, wrb::AllScanLists>;

// The text fields of the group that `configBit` names (0x1 manual ... 0x100 manual exclusions ...), TAB between them.
// A main group has ExtList, MoveDir, two unused fields and CustAction; an exclusion group ExcludedFolder, ExcludedFile
// and ExcludedExt.
bool dbGetExtraW(const wchar_t* uid, uint32_t configBit, std::wstring& text) noexcept;

// The agent's spyware restore sessions, one a field, TAB between them.
inline constexpr auto dbGetBackupLogAllSessionsW = wrb::ReadTextOf<DbCommand::GetBackupLogAllSessions>;

// The agent's approved spyware; an empty field ends the list. After an empty answer one DB_IS_CLIENT_EXISTED tells an
// agent without items, which succeeds, from an unknown one.
bool dbGetSpywareWhiteListW(const wchar_t* uid, std::vector<std::wstring>& items, uint32_t number = 0) noexcept;
