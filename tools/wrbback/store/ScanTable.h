// One agent's settings of one scan type as the database keeps them: the values of its three groups in one row of the
// table "scan".
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "ScanGroup.h"

namespace wrb {

class SqlDb;

struct StoredScan {
    // Of the main group, the texts of the exclusion group, and excludeFileExtList of the spyware group.
    // `values.flags` is the option word of the main and the exclusion group. cleanFailedMoveDir is not stored.
    ScanGroupValues values;
    uint32_t spywareFlags = 0;

    uint32_t& Flags(ScanGroupKind kind) { return kind == ScanGroupKind::Spyware ? spywareFlags : values.flags; }
};

inline constexpr std::array<ScanType, 4> kScanTypes = {ScanType::MS, ScanType::RT, ScanType::PS, ScanType::SN};

using StoredScans = std::array<StoredScan, kScanTypes.size()>;  // by ScanType

// The settings of an agent without a row: the defaults of the scan groups' tables.
StoredScan DefaultScan(ScanType type);

// The agent must exist and have no row of this type yet.
void InsertScan(SqlDb& db, const std::wstring& uid, ScanType type, const StoredScan& scan);

// For an agent without a configuration `scans` is empty. Returns nothing for an agent that does not exist.
struct AgentScans {
    std::optional<StoredScans> scans;
};
std::optional<AgentScans> ReadScans(SqlDb& db, const std::wstring& uid);

}  // namespace wrb
