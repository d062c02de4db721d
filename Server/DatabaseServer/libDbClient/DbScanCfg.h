// Reads of one agent's scan settings, a function each command.
//
// The functions by scan type fill the members of `values` that their command answers with (ScanGroup.h lists them) and
// leave the others alone. `number` is the request's last field; the server does not use it here.
//
// All return true on success; a false leaves the caller's values as they were, with a log line. None throws. For an
// agent that the server does not know the functions with `values` or `items` return false, those with a text true and
// an empty text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ScanGroup.h"

namespace wrb {

// Asks the group's command (DB_GET_MSCF ... DB_GET_SPYWARE_SNCF) and reads the group's numbers and, of a spyware group
// that has one, its list. The texts of main and exclusion groups come with dbGetExtraW.
bool GetDbScanGroup(const ScanGroup& group, const wchar_t* uid, ScanGroupValues& values, uint32_t number = 0) noexcept;

}  // namespace wrb

// Main groups: flags, compressedLayer, oleLayer, possibleVirusCustActInActiveAct; PS also the eight schedule numbers.
bool dbGetMscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetRtcfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetPscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetSncfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;

// Spyware groups: flags, and but for RT excludeFileExtList.
bool dbGetSpywareMscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetSpywareRtcfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetSpywarePscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;
bool dbGetSpywareSncfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number = 0) noexcept;

// The text fields of the group that `configBit` names (0x1 manual ... 0x100 manual exclusions ...), TAB between them.
// A main group has ExtList, MoveDir, two unused fields and CustAction; an exclusion group ExcludedFolder, ExcludedFile
// and ExcludedExt.
bool dbGetExtraW(const wchar_t* uid, uint32_t configBit, std::wstring& text) noexcept;

// The agent's spyware restore sessions, one a field, TAB between them.
bool dbGetBackupLogAllSessionsW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;

// The agent's approved spyware; an empty field ends the list. After an empty answer one DB_IS_CLIENT_EXISTED tells an
// agent without items, which succeeds, from an unknown one.
bool dbGetSpywareWhiteListW(const wchar_t* uid, std::vector<std::wstring>& items, uint32_t number = 0) noexcept;
