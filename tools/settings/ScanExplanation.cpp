#include "ScanExplanation.h"

#include <algorithm>

#include "CustomAction.h"
#include "DbScanCfg.h"
#include "ExportScanCfg.h"
#include "INICache.h"

namespace wrb {
namespace {

uint32_t MaskOf(const ScanRow& row) {
    uint32_t mask = row.bits;
    if (row.choice != nullptr) {
        for (const ScanChoice::Arm& arm : row.choice->shown) {
            mask |= arm.bits;
        }
    }
    return mask;
}

void ExplainFromDatabase(const ScanGroup& group, const ScanRow& row, const ScanGroupValues& stored, Explanation& line) {
    line.from = group.numbersCommand;
    switch (row.kind) {
        case ScanRowKind::Bit:
        case ScanRowKind::Choice:
            line.source = SettingSource::DatabaseBit;
            line.word = stored.flags;
            line.mask = MaskOf(row);
            break;
        case ScanRowKind::Int:
            line.source = SettingSource::DatabaseNumber;
            break;
        default:
            line.source = SettingSource::DatabaseText;
            line.from = group.kind == ScanGroupKind::Spyware ? line.from : L"DB_GET_EXTRA";
            if (row.text == &ScanGroupValues::cleanFailedMoveDir) {
                line.from += L", MoveDir";
            }
    }
}

void ExplainFromIni(const ScanRow& row, Explanation& line) {
    const bool isThere = IsInScanIni(line.section, std::wstring(row.key));
    line.source = isThere ? SettingSource::ScanIni : SettingSource::Default;
    line.from = L"wrbscan.ini";
}

// The row of a line. The exploit item of a custom action has a key of its own.
const ScanRow& RowOf(const ScanGroup& group, const std::wstring& key) {
    const auto row = std::ranges::find(group.rows, key, &ScanRow::key);
    return row != group.rows.end() ? *row : *std::ranges::find(group.rows, L"CustAction", &ScanRow::key);
}

}  // namespace

bool IsInScanIni(const std::wstring& section, const std::wstring& key) {
    constexpr wchar_t kAbsent[] = L"\x7F";
    constexpr int kBypass = 1;
    wchar_t text[4] = {};
    ScanIniCache().readINIString(text, section.c_str(), key.c_str(), kAbsent, 4, kBypass);
    return std::wstring_view(text) != kAbsent;
}

std::optional<AllScanValues> ReadAllScanGroups(const std::wstring& uid) {
    constexpr wchar_t kCaller[] = L"ReadAllScanGroups";
    AllScanConfig config;
    AllScanLists lists;
    if (!dbGetClnAllScanCfgW(uid.c_str(), config, kCaller) || !config.hasConfig ||
        (config.hasExtra && !dbGetClnAllScanExW(uid.c_str(), lists, kCaller))) {
        return std::nullopt;
    }
    AllScanValues values = TakeAllScanValues(std::move(config), std::move(lists));
    // The complete reply takes this word from the prescheduled scan; what is stored is the main group's.
    values[ScanGroupIndex(ScanType::SN, ScanGroupKind::Exclusion)].flags =
        values[ScanGroupIndex(ScanType::SN, ScanGroupKind::Main)].flags;
    return values;
}

void ExplainScanGroup(const ScanGroup& group, const std::wstring& uid, uint32_t changedBits,
                      const ScanGroupValues& stored, std::vector<Explanation>& out) {
    ScanGroupValues shown = stored;
    if (group.kind == ScanGroupKind::Main && !uid.empty()) {
        CompleteCustomAction(ScanIniCache(), shown.custAction);
    }
    std::wstring section;
    RenderScanGroup(section, group, uid, shown);
    for (IniLine& line : SplitSections(section)) {
        const ScanRow& row = RowOf(group, line.key);
        Explanation each(std::move(line));
        if (row.kind == ScanRowKind::Uid) {
            each.source = SettingSource::Request;
        } else if (row.IsSetting()) {
            uid.empty() ? ExplainFromIni(row, each) : ExplainFromDatabase(group, row, stored, each);
        }
        if (row.text == &ScanGroupValues::custAction && shown.custAction != stored.custAction) {
            each.source = SettingSource::Completed;
            each.from += L", INI_MAJOR_VIRUS_TYPE_SECTION";
        }
        each.groupBit = uid.empty() ? 0 : group.configFlag;
        each.isChanged = (changedBits & each.groupBit) != 0;
        out.push_back(std::move(each));
    }
}

}  // namespace wrb
