// Writes of scan settings, to one agent's record or to every record, a function each command.
//
// A write replaces the bits of the stored flag word that the mask names, and all numbers and texts of the group: those
// that ScanGroup.h lists, without flags (the value takes its place) and without cleanFailedMoveDir, which the database
// does not keep. The real-time spyware group has neither numbers nor a list: it is value and mask alone. A number goes
// out with its sign, the words without. All return true once the bytes are on the pipe, whether or not the database
// takes them; a false leaves a log line. None throws.
//
// A text ends at its first NUL for the database, and with it the whole request: texts must not have one.
#pragma once

#include <cstdint>

#include "ScanGroup.h"

namespace wrb {

struct ScanUpdate {
    uint32_t value = 0;  // the new option bits
    uint32_t mask = 0;   // which bits of the stored word they replace
    uint32_t flag = 0;   // handed through to the database, which gives it no meaning; exclusion writes do not carry it
};

// By group: DB_SET_MSCF ... DB_SET_SPYWARE_SNCF and DB_SET_EXCLUDE_LIST, and their forms for every agent. Of an
// exclusion group only the texts are written, whatever `update` says; its option bit takes the flag functions.
bool SetDbScanGroup(const ScanGroup& group, const wchar_t* uid, const ScanUpdate& update,
                    const ScanGroupValues& values) noexcept;
bool SetAllDbScanGroup(const ScanGroup& group, const ScanUpdate& update, const ScanGroupValues& values) noexcept;

// By scan type: the flag word alone, DB_SET_MS_FLG ... DB_SET_ALL_SN_FLG.
bool SetDbScanFlags(ScanType type, const wchar_t* uid, uint32_t value, uint32_t mask) noexcept;
bool SetAllDbScanFlags(ScanType type, uint32_t value, uint32_t mask) noexcept;

}  // namespace wrb

bool dbSetMscfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetRtcfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetPscfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSncfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetAllMscfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetAllRtcfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetAllPscfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetAllSncfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;

bool dbSetSpywareMscfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareRtcfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywarePscfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareSncfW(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareAllMscfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareAllRtcfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareAllPscfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;
bool dbSetSpywareAllSncfW(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept;

// `configBit` names the exclusion group (0x100, 0x4000, 0x8000, 0x10000).
bool dbSetExcludeListW(const wchar_t* uid, uint32_t configBit, const wrb::ScanGroupValues& values) noexcept;
bool dbSetAllExcListW(uint32_t configBit, const wrb::ScanGroupValues& values) noexcept;

bool dbSetMsFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept;
bool dbSetRtFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept;
bool dbSetPsFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept;
bool dbSetSnFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept;
bool dbSetAllMsFlgW(uint32_t value, uint32_t mask) noexcept;
bool dbSetAllRtFlgW(uint32_t value, uint32_t mask) noexcept;
bool dbSetAllPsFlgW(uint32_t value, uint32_t mask) noexcept;
bool dbSetAllSnFlgW(uint32_t value, uint32_t mask) noexcept;
