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

// A text of length 0 leaves its target alone, so that a record read into again must not keep the old one.
void ReadText(CSerializer& in, std::wstring& text) {
    text.clear();
    in >> text;
}

}  // namespace

void wrb::AllScanConfig::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    out << hasConfig;
    if (!hasConfig) {
        return;
    }
    out << hasExtra;
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const wrb::ScanNumber member : NumbersOf(scan)) {
            out << scans[scan].*member;
        }
        out << spywareFlags[scan];
        for (const wrb::ScanText member : kTexts) {
            out << scans[scan].*member;
        }
    }
}

void wrb::AllScanConfig::Deserialize(ISerializer& serializer) {
    CSerializer& in = serializer.GetSerializer();
    in >> hasConfig;
    hasExtra = false;
    if (!hasConfig) {
        return;
    }
    in >> hasExtra;
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const wrb::ScanNumber member : NumbersOf(scan)) {
            in >> scans[scan].*member;
        }
        in >> spywareFlags[scan];
        for (const wrb::ScanText member : kTexts) {
            ReadText(in, scans[scan].*member);
        }
    }
}

void wrb::AllScanConfig::Clear() {
    *this = wrb::AllScanConfig();
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
            ReadText(in, scans[scan].*member);
        }
    }
}

void wrb::AllScanLists::Clear() {
    *this = wrb::AllScanLists();
}
