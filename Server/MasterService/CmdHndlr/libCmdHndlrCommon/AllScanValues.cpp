#include "AllScanValues.h"

#include <utility>

#include "ExportScanCfg.h"

namespace wrb {
namespace {

constexpr std::size_t kReplyRoom = 20480;
constexpr std::size_t kSectionRoom = 2048;

uint32_t ExclusionFlags(const AllScanConfig& config, std::size_t scan) {
    const bool scanNow = static_cast<ScanType>(scan) == ScanType::SN;
    return config.scans[scanNow ? static_cast<std::size_t>(ScanType::PS) : scan].flags;
}

}  // namespace

AllScanValues TakeAllScanValues(AllScanConfig&& config, AllScanLists&& lists) {
    AllScanValues values;
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        const auto type = static_cast<ScanType>(scan);
        ScanGroupValues& exclusion = values[ScanGroupIndex(type, ScanGroupKind::Exclusion)];
        exclusion.flags = ExclusionFlags(config, scan);
        exclusion.excludedFolder = std::move(lists.scans[scan].excludedFolder);
        exclusion.excludedFile = std::move(lists.scans[scan].excludedFile);
        exclusion.excludedExt = std::move(lists.scans[scan].excludedExt);

        ScanGroupValues& spyware = values[ScanGroupIndex(type, ScanGroupKind::Spyware)];
        spyware.flags = config.spywareFlags[scan];
        spyware.excludeFileExtList = std::move(lists.scans[scan].excludeFileExtList);

        ScanGroupValues& main = values[ScanGroupIndex(type, ScanGroupKind::Main)];
        main = std::move(config.scans[scan]);
        main.cleanFailedMoveDir = main.moveDir;
    }
    return values;
}

void ExportAllScanGroups(std::wstring& out, std::wstring_view uid, const AllScanValues& values) {
    out.reserve(kReplyRoom);
    std::wstring section;
    section.reserve(kSectionRoom);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ExportScanGroup(section, kScanGroups[i], uid, values[i]);
        out.append(section);
        section.clear();
    }
}

}  // namespace wrb
