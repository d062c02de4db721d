#include "SettingCatalog.h"

#include <algorithm>

#include "IgnoringCase.h"
#include "NearestName.h"
#include "ScanRowText.h"
#include "Text.h"

namespace wrb {
namespace {

SettingKind KindOf(const ScanRow& row) {
    switch (row.kind) {
        case ScanRowKind::Bit:
            return SettingKind::Switch;
        case ScanRowKind::Int:
            return SettingKind::Number;
        case ScanRowKind::Choice:
            return SettingKind::Choice;
        case ScanRowKind::Text:
        case ScanRowKind::CustomActionPair:
            return SettingKind::Text;
        case ScanRowKind::Uid:
        case ScanRowKind::Empty:
            break;
    }
    return SettingKind::Fixed;
}

std::vector<SettingInfo> MakeCatalog() {
    std::vector<SettingInfo> all;
    for (const ScanGroup& group : kScanGroups) {
        for (const ScanRow& row : group.rows) {
            all.push_back({&group, &row, KindOf(row), FindSettingHelp(group.kind, row.key)});
        }
    }
    return all;
}

}  // namespace

const char* NameOf(SettingKind kind) noexcept {
    constexpr const char* kNames[] = {"switch", "number", "choice", "text", "fixed"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::wstring SettingInfo::Default() const {
    if (kind == SettingKind::Text) {
        return row->defaultText;
    }
    return kind == SettingKind::Fixed ? std::wstring() : std::to_wstring(row->defaultNumber);
}

std::vector<uint32_t> SettingInfo::Choices() const {
    if (kind == SettingKind::Switch) {
        return {0, 1};
    }
    std::vector<uint32_t> numbers;
    if (kind == SettingKind::Choice) {
        numbers.push_back(row->choice->otherwise);
        for (const ScanChoice::Arm& arm : row->choice->shown) {
            if (arm.bits != 0) {
                numbers.push_back(arm.value);
            }
        }
        std::ranges::sort(numbers);
    }
    return numbers;
}

std::string SettingInfo::Range() const {
    if (kind == SettingKind::Text || kind == SettingKind::Fixed) {
        return kind == SettingKind::Text ? "a text" : "not set";
    }
    const std::string unit = *help->unit == '\0' ? std::string() : std::string(" ") + help->unit;
    if (kind == SettingKind::Number) {
        return std::to_string(help->least) + " to " + std::to_string(help->most) + unit;
    }
    const std::vector<uint32_t> numbers = Choices();
    std::string text;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        text += (i == 0 ? "" : i + 1 < numbers.size() ? ", " : " or ") + std::to_string(numbers[i]);
    }
    return text;
}

std::string SettingInfo::Shown(std::wstring_view value) const {
    if (kind == SettingKind::Switch) {
        return value == L"1" ? "on" : "off";
    }
    return value.empty() ? "empty" : WideToUtf8(value);
}

bool SettingInfo::IsSetFor(bool agent) const noexcept {
    return kind != SettingKind::Fixed && !(agent && row->text == &ScanGroupValues::cleanFailedMoveDir);
}

std::span<const SettingInfo> SettingCatalog() {
    static const std::vector<SettingInfo> catalog = MakeCatalog();
    return catalog;
}

const ScanGroup* FindScanSection(std::wstring_view name) noexcept {
    const auto found = std::ranges::find_if(kScanGroups, [name](const ScanGroup& group) {
        return EqualIgnoringCase(group.section, name) || EqualIgnoringCase(group.name, name);
    });
    return found == kScanGroups.end() ? nullptr : &*found;
}

const SettingInfo* FindSetting(const ScanGroup& group, std::wstring_view key) {
    const auto catalog = SettingCatalog();
    const auto found = std::ranges::find_if(catalog, [&](const SettingInfo& setting) {
        return setting.group == &group && EqualIgnoringCase(setting.Key(), key);
    });
    return found == catalog.end() ? nullptr : &*found;
}

SettingName ParseSettingName(std::wstring_view text) {
    const std::size_t point = text.rfind(L'.');
    return point == text.npos ? SettingName{std::wstring(text), {}}
                              : SettingName{std::wstring(text.substr(0, point)), std::wstring(text.substr(point + 1))};
}

std::wstring_view NearestSection(std::wstring_view text) {
    std::vector<std::wstring_view> names;
    for (const ScanGroup& group : kScanGroups) {
        names.insert(names.end(), {group.section, group.name});
    }
    return NearestName(text, names);
}

std::wstring_view NearestKey(const ScanGroup& group, std::wstring_view text) {
    std::vector<std::wstring_view> keys;
    for (const ScanRow& row : group.rows) {
        keys.push_back(row.key);
    }
    return NearestName(text, keys);
}

}  // namespace wrb
