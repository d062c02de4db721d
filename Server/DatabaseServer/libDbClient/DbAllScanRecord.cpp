#include "DbAllScanRecord.h"

#include <algorithm>

#include "Serializer.h"

namespace {

using Lists = tagClnAllScanCfgEx::tagLists;

constexpr std::wstring tagScanGroupValues::*kTexts[] = {&tagScanGroupValues::extList, &tagScanGroupValues::moveDir,
                                                        &tagScanGroupValues::custAction};
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

void tagClnAllScanCfg::Serialize(ISerializer& serializer) const {
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

void tagClnAllScanCfg::Deserialize(ISerializer& serializer) {
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

void tagClnAllScanCfg::Clear() {
    *this = tagClnAllScanCfg();
}

bool tagClnAllScanCfgEx::HasText() const noexcept {
    return std::ranges::any_of(scans, [](const tagLists& lists) {
        return std::ranges::any_of(kLists, [&](auto member) { return !(lists.*member).empty(); });
    });
}

void tagClnAllScanCfgEx::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const auto member : ListsOf(scan)) {
            out << scans[scan].*member;
        }
    }
}

void tagClnAllScanCfgEx::Deserialize(ISerializer& serializer) {
    CSerializer& in = serializer.GetSerializer();
    for (std::size_t scan = 0; scan < scans.size(); ++scan) {
        for (const auto member : ListsOf(scan)) {
            ReadText(in, scans[scan].*member);
        }
    }
}

void tagClnAllScanCfgEx::Clear() {
    *this = tagClnAllScanCfgEx();
}
