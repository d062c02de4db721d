// The two records that hold all scan settings of an agent, as the database server sends them in one answer each.
// docs/wire-formats.md gives them field by field with an example; the order below is the order on the wire.
//
// Both are read without trust: a cut or mutated answer throws CIPCMsgBufferException and leaves the record partly read.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "ISerializer.h"
#include "ScanGroup.h"

inline constexpr std::size_t kScanTypeCount = 4;  // in the order of wrb::ScanType: MS, RT, PS, SN

namespace wrb {

// DBV2_CLIENT_GET_ALL_SCAN_CFG.
//
//   bool hasConfig                  false: the agent has no configuration, and nothing else follows
//   bool hasExtra                   true: ask for the second record too
//   then for each scan type:
//     u32  flags, compressedLayer, oleLayer, possibleVirusCustActInActiveAct
//     u32  frequency, hour, minute, amPm, dayOfMonth, dayOfWeek, weekOrdinalOfMonth, weekdayOfMonth   PS only
//     u32  flags of the spyware group
//     text extList, moveDir, custAction
struct AllScanConfig : ISerializable {
    bool hasConfig = false;
    bool hasExtra = false;
    std::array<ScanGroupValues, kScanTypeCount> scans;  // the members named above; the others are not touched
    std::array<uint32_t, kScanTypeCount> spywareFlags{};

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void Clear() override { *this = {}; }
};

// DBV2_CLIENT_GET_ALL_SCAN_EX: the lists, which most agents do not have. For each scan type:
//
//   text excludedFolder, excludedFile, excludedExt
//   text excludeFileExtList         not RT
struct AllScanLists : ISerializable {
    struct Lists {
        std::wstring excludedFolder;
        std::wstring excludedFile;
        std::wstring excludedExt;
        std::wstring excludeFileExtList;  // of the spyware group; always empty for RT
    };
    std::array<Lists, kScanTypeCount> scans;

    // Whether any list has a text: the first record's hasExtra.
    bool HasText() const noexcept;

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void Clear() override { *this = {}; }
};

}  // namespace wrb
