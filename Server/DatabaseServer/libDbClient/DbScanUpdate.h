// Writes of scan settings, to one agent's record or to every record.
//
// A write replaces the bits of the stored flag word that the mask names, and all numbers and texts of the group that
// ScanGroup.h lists, but for cleanFailedMoveDir, which the database does not keep. The real-time spyware group is value
// and mask alone. Numbers are sent signed, the words unsigned. All return true once the bytes are on the pipe, whether
// or not the database takes them; a false leaves a log line. None throws.
//
// Texts must not have a NUL: the database would end the whole request there.
#pragma once

#include <cstdint>
#include <optional>

#include "ScanGroup.h"

namespace wrb {

struct ScanWrite {
    uint32_t value = 0;  // the new option bits
    uint32_t mask = 0;   // which bits of the stored word they replace
    uint32_t flag = 0;   // sent to the database, which ignores it; exclusion writes do not carry it
};

// One agent's uid, or nothing for every agent.
using DbTarget = std::optional<const wchar_t*>;
inline constexpr DbTarget kEveryAgent = std::nullopt;

// By group: DB_SET_MSCF ... DB_SET_SPYWARE_SNCF and DB_SET_EXCLUDE_LIST, and their forms for every agent. Of an
// exclusion group only the texts are written, whatever `update` says; its option bit takes SetDbScanFlags.
bool SetDbScanGroup(const ScanGroup& group, DbTarget target, const ScanWrite& update,
                    const ScanGroupValues& values) noexcept;

// By scan type: the flag word alone, DB_SET_MS_FLG ... DB_SET_ALL_SN_FLG.
bool SetDbScanFlags(ScanType type, DbTarget target, uint32_t value, uint32_t mask) noexcept;

// The same for what is known when the program is compiled.
template <ScanType type, ScanGroupKind kind>
bool SetDbScan(const wchar_t* uid, const ScanWrite& update, const ScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(type, kind), uid, update, values);
}
template <ScanType type, ScanGroupKind kind>
bool SetAllDbScan(const ScanWrite& update, const ScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(type, kind), kEveryAgent, update, values);
}
template <ScanType type>
bool SetDbFlags(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(type, uid, value, mask);
}
template <ScanType type>
bool SetAllDbFlags(uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(type, kEveryAgent, value, mask);
}

}  // namespace wrb

inline constexpr auto dbSetMscfW = wrb::SetDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetRtcfW = wrb::SetDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetPscfW = wrb::SetDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetSncfW = wrb::SetDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetAllMscfW = wrb::SetAllDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetAllRtcfW = wrb::SetAllDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetAllPscfW = wrb::SetAllDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetAllSncfW = wrb::SetAllDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto dbSetSpywareMscfW = wrb::SetDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareRtcfW = wrb::SetDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywarePscfW = wrb::SetDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareSncfW = wrb::SetDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareAllMscfW = wrb::SetAllDbScan<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareAllRtcfW = wrb::SetAllDbScan<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareAllPscfW = wrb::SetAllDbScan<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetSpywareAllSncfW = wrb::SetAllDbScan<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;
inline constexpr auto dbSetMsFlgW = wrb::SetDbFlags<wrb::ScanType::MS>;
inline constexpr auto dbSetRtFlgW = wrb::SetDbFlags<wrb::ScanType::RT>;
inline constexpr auto dbSetPsFlgW = wrb::SetDbFlags<wrb::ScanType::PS>;
inline constexpr auto dbSetSnFlgW = wrb::SetDbFlags<wrb::ScanType::SN>;
inline constexpr auto dbSetAllMsFlgW = wrb::SetAllDbFlags<wrb::ScanType::MS>;
inline constexpr auto dbSetAllRtFlgW = wrb::SetAllDbFlags<wrb::ScanType::RT>;
inline constexpr auto dbSetAllPsFlgW = wrb::SetAllDbFlags<wrb::ScanType::PS>;
inline constexpr auto dbSetAllSnFlgW = wrb::SetAllDbFlags<wrb::ScanType::SN>;
