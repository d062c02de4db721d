#include "DbAllScanRecord.h"

#include <algorithm>

#include "Serializer.h"

namespace {

using Lists = wrb::AllScanLists::Lists;

constexpr std::wstring wrb::ScanGroupValues::*kTexts[] = {
    &wrb::ScanGroupValues::extList, &wrb::ScanGroupValues::moveDir, &wrb::ScanGroupValues::custAction};
constexpr std::wstring Lists::*kLists[] = {&Lists::excludedFolder, &Lists::excludedFile, &Lists::excludedExt,
                                           &Lists::excludeFileExtList};

std::span<const wrb::ScanNumber> NumbersOf(std::size_t scan) noexcept {
    return wrb::FindScanGroup(static_cast<wrb::ScanType>(scan), wrb::ScanGroupKind::Main).numbers;
}

std::span<std::wstring Lists::*const> ListsOf(std::size_t scan) noexcept {
    const std::span all(kLists);
    return static_cast<wrb::ScanType>(scan) == wrb::ScanType::RT ? all.first(3) : all;
}

// Visits the fields after the two switches, in their order on the wire.
template <typename Config, typename Visit>
void ForEachField(Config& config, Visit visit) {
    for (std::size_t scan = 0; scan < config.scans.size(); ++scan) {
        for (const wrb::ScanNumber member : NumbersOf(scan)) {
            visit(config.scans[scan].*member);
        }
        visit(config.spywareFlags[scan]);
        for (const wrb::ScanText member : kTexts) {
            visit(config.scans[scan].*member);
        }
    }
}

void Read(CSerializer& in, uint32_t& number) {
    in >> number;
}

// A text of length 0 would leave its target as it was.
void Read(CSerializer& in, std::wstring& text) {
    text.clear();
    in >> text;
}

}  // namespace

void wrb::AllScanConfig::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    out << hasConfig;
    if (hasConfig) {
        out << hasExtra;
        ForEachField(*this, [&](const auto& field) { out << field; });
    }
}

void wrb::AllScanConfig::Deserialize(ISerializer& serializer) {
    CSerializer& in = serializer.GetSerializer();
    in >> hasConfig;
    hasExtra = false;
    if (hasConfig) {
        in >> hasExtra;
        ForEachField(*this, [&](auto& field) { Read(in, field); });
    }
}

bool wrb::AllScanLists::HasText() const noexcept {
    return std::ranges::any_of(scans, [](const Lists& lists) {
        return std::ranges::any_of(kLists, [&](auto member) { return !(lists.*member).empty(); });
    });
}

void wrb::AllScanLists::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const auto member : ListsOf(scan)) {
            out << scans[scan].*member;
        }
    }
}

void wrb::AllScanLists::Deserialize(ISerializer& serializer) {
    CSerializer& in = serializer.GetSerializer();
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const auto member : ListsOf(scan)) {
            Read(in, scans[scan].*member);
        }
    }
}
