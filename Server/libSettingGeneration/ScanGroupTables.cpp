#include "ScanGroup.h"

namespace wrb {
namespace {

using Values = ScanGroupValues;
using enum ScanRowKind;

constexpr uint32_t Mask(unsigned bit) {
    return uint32_t{1} << bit;
}

// Whether the agent may configure itself: the same bit in every word. An update never changes it.
constexpr unsigned kAllowCfg = 1;

constexpr ScanRow BitRow(std::wstring_view key, unsigned bit, uint32_t defaultNumber) {
    return {.key = key, .kind = Bit, .bits = Mask(bit), .defaultNumber = defaultNumber};
}

constexpr ScanRow IntRow(std::wstring_view key, ScanNumber number, uint32_t defaultNumber) {
    return {.key = key, .kind = Int, .number = number, .defaultNumber = defaultNumber};
}

constexpr ScanRow TextRow(std::wstring_view key, ScanText text, const wchar_t* defaultText) {
    return {.key = key, .kind = Text, .text = text, .defaultText = defaultText};
}

constexpr ScanRow ChoiceRow(std::wstring_view key, const ScanChoice& choice, uint32_t defaultNumber) {
    return {.key = key, .kind = Choice, .choice = &choice, .defaultNumber = defaultNumber};
}

constexpr ScanRow UpdatedAfter(std::wstring_view key, ScanRow row) {
    row.updateAfter = key;
    return row;
}

constexpr ScanRow NotUpdated(ScanRow row) {
    row.isUpdated = false;
    return row;
}

// ---- keys that several sections have ----

constexpr ScanChoice kScanSpeed{
    .shown = {{{Mask(17), 1}, {Mask(18), 2}}}, .otherwise = 0, .stored = {{{Mask(17), 1}, {Mask(18), 2}}}};
constexpr ScanChoice kSpywareScanType{
    .shown = {{{Mask(8), 1}}}, .otherwise = 2, .stored = {{{Mask(8), 1}, {Mask(9), 2}}}};
// Stored alike, shown differently: manual and scan now test the bit of 1, prescheduled the bit of 2.
constexpr ScanChoice kSpywareAction{
    .shown = {{{Mask(16), 1}}}, .otherwise = 2, .stored = {{{Mask(16), 1}, {Mask(17), 2}}}};
constexpr ScanChoice kSpywareActionScheduled{
    .shown = {{{Mask(17), 2}}}, .otherwise = 1, .stored = {{{Mask(16), 1}, {Mask(17), 2}}}};
constexpr ScanChoice kSpywareActionRealTime{
    .shown = {{{Mask(2), 2}, {Mask(3), 0}}}, .otherwise = 1, .stored = {{{Mask(2), 2}, {Mask(3), 0}}}};

constexpr const wchar_t* kDefaultCustAction = L"Universe-5-4";

constexpr ScanRow kUid{.key = L"UID", .kind = Uid};
constexpr ScanRow kReserved{.key = L"Reserved", .kind = Empty};
constexpr ScanRow kOleExploitDetection = BitRow(L"OleExploitDetection", 29, 1);
constexpr ScanRow kOleLayer = IntRow(L"OleLayer", &Values::oleLayer, 3);
constexpr ScanRow kEnablePossibleVirusAction = BitRow(L"EnablePossibleVirusCustActInActiveAct", 26, 0);
constexpr ScanRow kPossibleVirusAction =
    IntRow(L"PossibleVirusCustActInActiveAct", &Values::possibleVirusCustActInActiveAct, 4);
constexpr ScanRow kSystemCleanForPossibleVirus = BitRow(L"SystemCleanForPossibleVirus", 27, 0);
constexpr ScanRow kCompressedLayer =
    UpdatedAfter(L"ScanCompressed", IntRow(L"CompressedLayer", &Values::compressedLayer, 20));
constexpr ScanRow kExtList =
    TextRow(L"ExtList", &Values::extList, L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386");
constexpr ScanRow kMoveDir = TextRow(L"MoveDir", &Values::moveDir, L"\\temp");
constexpr ScanRow kCleanFailedMoveDir = TextRow(L"CleanFailedMoveDir", &Values::cleanFailedMoveDir, L"\\temp");
constexpr ScanRow kCustAction =
    UpdatedAfter(L"EnableUniAct", TextRow(L"CustAction", &Values::custAction, kDefaultCustAction));
constexpr ScanRow kIntelliTrap = BitRow(L"IntelliTrap", 24, 1);
constexpr ScanRow kEnableAggressiveClean = NotUpdated(BitRow(L"EnableAggressiveClean", 20, 0));

// ---- sections ----

constexpr ScanRow kManual[] = {
    kUid,
    BitRow(L"Enable", 0, 1),
    BitRow(L"IntelliScan", 8, 0),
    BitRow(L"ActiveAction", 9, 0),
    BitRow(L"AllowCfg", kAllowCfg, 0),
    BitRow(L"ScanMemory", 2, 1),
    BitRow(L"ScanBoot", 3, 1),
    BitRow(L"ScanCompressed", 4, 1),
    kOleExploitDetection,
    kOleLayer,
    kEnablePossibleVirusAction,
    kPossibleVirusAction,
    kSystemCleanForPossibleVirus,
    kCompressedLayer,
    BitRow(L"ScanSpyware", 10, 1),
    BitRow(L"ScanAllFiles", 5, 1),
    kExtList,
    BitRow(L"EnableExclusion", 11, 1),
    BitRow(L"BkUpIfClean", 6, 1),
    kMoveDir,
    kCleanFailedMoveDir,
    BitRow(L"ScanHiddenFolder", 7, 1),
    kCustAction,
    BitRow(L"EnableUniAct", 12, 1),
    BitRow(L"ScanNetwork", 13, 0),
    ChoiceRow(L"ScanSpeed", kScanSpeed, 0),
    kIntelliTrap,
    kEnableAggressiveClean,
    kReserved,
};

constexpr ScanRow kRealTime[] = {
    kUid,
    BitRow(L"Enable", 0, 1),
    BitRow(L"IntelliScan", 8, 0),
    BitRow(L"ActiveAction", 9, 0),
    BitRow(L"AllowCfg", kAllowCfg, 0),
    BitRow(L"ScanBoot", 2, 1),
    BitRow(L"ScanShutDown", 3, 1),
    BitRow(L"ScanCompressed", 4, 1),
    BitRow(L"RavageScanMemory", 30, 0),
    kOleExploitDetection,
    kOleLayer,
    kEnablePossibleVirusAction,
    kPossibleVirusAction,
    kSystemCleanForPossibleVirus,
    BitRow(L"DispPossibleVirusFoundAlert", 28, 1),
    BitRow(L"USBBootScan", 17, 0),
    BitRow(L"USBScanTouch", 18, 0),
    kCompressedLayer,
    BitRow(L"ScanSpyware", 7, 1),
    BitRow(L"ScanAllFiles", 5, 1),
    kExtList,
    BitRow(L"EnableExclusion", 12, 1),
    BitRow(L"BkUpIfClean", 6, 1),
    kMoveDir,
    kCleanFailedMoveDir,
    BitRow(L"ScanIncoming", 10, 1),
    BitRow(L"ScanOutgoing", 11, 0),
    BitRow(L"EnableUniAct", 13, 1),
    {.key = L"CustAction", .kind = CustomActionPair, .text = &Values::custAction, .defaultText = kDefaultCustAction},
    BitRow(L"ScanNetwork", 14, 0),
    BitRow(L"PopVirusFoundAlert", 15, 1),
    kIntelliTrap,
    BitRow(L"AtseCveExploitAction", 25, 0),
    kEnableAggressiveClean,
    kReserved,
};

constexpr ScanRow kPrescheduled[] = {
    kUid,
    BitRow(L"Enable", 0, 1),
    BitRow(L"IntelliScan", 11, 0),
    BitRow(L"ActiveAction", 12, 0),
    BitRow(L"AllowCfg", kAllowCfg, 0),
    BitRow(L"ScanMemory", 2, 1),
    BitRow(L"ScanBoot", 3, 1),
    BitRow(L"ScanCompressed", 4, 1),
    kOleExploitDetection,
    kOleLayer,
    kEnablePossibleVirusAction,
    kPossibleVirusAction,
    kSystemCleanForPossibleVirus,
    BitRow(L"DispPossibleVirusFoundAlert", 28, 1),
    kCompressedLayer,
    BitRow(L"ScanSpyware", 10, 1),
    BitRow(L"ScanAllFiles", 5, 1),
    kExtList,
    BitRow(L"EnableExclusion", 13, 1),
    IntRow(L"Frequency", &Values::frequency, 1),
    IntRow(L"Hour", &Values::hour, 12),
    IntRow(L"Minute", &Values::minute, 0),
    IntRow(L"AmPm", &Values::amPm, 1),
    IntRow(L"DayOfMonth", &Values::dayOfMonth, 1),
    IntRow(L"DayOfWeek", &Values::dayOfWeek, 7),
    IntRow(L"WeekOrdinalOfMonth", &Values::weekOrdinalOfMonth, 1),
    IntRow(L"WeekdayOfMonth", &Values::weekdayOfMonth, 1),
    BitRow(L"BkUpIfClean", 9, 1),
    kMoveDir,
    kCleanFailedMoveDir,
    kCustAction,
    BitRow(L"EnableUniAct", 14, 1),
    BitRow(L"PopVirusFoundAlert", 15, 1),
    ChoiceRow(L"ScanSpeed", kScanSpeed, 0),
    kIntelliTrap,
    kEnableAggressiveClean,
    kReserved,
};

constexpr ScanRow kScanNow[] = {
    kUid,
    BitRow(L"IntelliScan", 8, 0),
    BitRow(L"ActiveAction", 9, 0),
    BitRow(L"ScanMemory", 2, 1),
    BitRow(L"ScanBoot", 3, 1),
    BitRow(L"ScanCompressed", 4, 1),
    kOleExploitDetection,
    kOleLayer,
    kEnablePossibleVirusAction,
    kPossibleVirusAction,
    kSystemCleanForPossibleVirus,
    kCompressedLayer,
    BitRow(L"ScanSpyware", 10, 1),
    BitRow(L"ScanAllFiles", 5, 1),
    kExtList,
    BitRow(L"EnableExclusion", 11, 1),
    BitRow(L"BkUpIfClean", 6, 1),
    kMoveDir,
    kCleanFailedMoveDir,
    kCustAction,
    BitRow(L"EnableUniAct", 12, 1),
    BitRow(L"ScanHiddenFolder", 7, 0),
    ChoiceRow(L"ScanSpeed", kScanSpeed, 0),
    kIntelliTrap,
    BitRow(L"Enable", 0, 1),
    BitRow(L"ScanMethod", 25, 0),
    kEnableAggressiveClean,
    kReserved,
};

constexpr ScanRow kExclusion[] = {
    kUid,
    {.key = L"ExcludeCallowayProduct", .kind = Bit, .bits = kExcludeCallowayProductBit, .defaultNumber = 1},
    TextRow(L"ExcludedFolder", &Values::excludedFolder, L""),
    TextRow(L"ExcludedFile", &Values::excludedFile, L""),
    TextRow(L"ExcludedExt", &Values::excludedExt, L""),
};

constexpr ScanRow kSpywareEnable = BitRow(L"Enable", 0, 1);
constexpr ScanRow kSpywareAllowCfg = BitRow(L"AllowCfg", kAllowCfg, 0);
constexpr ScanRow kSpywareScanTypeRow = ChoiceRow(L"ScanType", kSpywareScanType, 1);
constexpr ScanRow kPopSpywareFoundAlert = BitRow(L"PopSpywareFoundAlert", 18, 0);
constexpr ScanRow kEnableSpyExclusion = BitRow(L"EnableSpyExclusion", 24, 1);
constexpr ScanRow kExcludeFileExtList = TextRow(L"ExcludeFileExtList", &Values::excludeFileExtList, L"MP3;");

constexpr ScanRow kSpywareManual[] = {
    kUid,
    kSpywareEnable,
    kSpywareAllowCfg,
    kSpywareScanTypeRow,
    ChoiceRow(L"ActionType", kSpywareAction, 1),
    kEnableSpyExclusion,
    kExcludeFileExtList,
};

constexpr ScanRow kSpywareRealTime[] = {
    kUid, kSpywareEnable, kSpywareAllowCfg, ChoiceRow(L"ActionType", kSpywareActionRealTime, 1), kPopSpywareFoundAlert,
};

constexpr ScanRow kSpywarePrescheduled[] = {
    kUid,
    kSpywareEnable,
    kSpywareAllowCfg,
    kSpywareScanTypeRow,
    ChoiceRow(L"ActionType", kSpywareActionScheduled, 1),
    kPopSpywareFoundAlert,
    kEnableSpyExclusion,
    kExcludeFileExtList,
};

constexpr ScanRow kSpywareScanNow[] = {
    kUid,
    kSpywareEnable,
    kSpywareAllowCfg,
    kSpywareScanTypeRow,
    ChoiceRow(L"ActionType", kSpywareAction, 1),
    kPopSpywareFoundAlert,
    kEnableSpyExclusion,
    kExcludeFileExtList,
};

// ---- updates ----

template <std::size_t count>
class UpdateOrder {
  public:
    constexpr explicit UpdateOrder(const ScanRow (&rows)[count]) {
        for (const ScanRow& row : rows) {
            if (row.updateAfter.empty() && Add(row)) {
                AddThoseAfter(rows, row.key);
            }
        }
    }

    constexpr std::span<const ScanRow* const> Rows() const { return std::span(m_rows).first(m_used); }

  private:
    constexpr bool Add(const ScanRow& row) {
        const bool has = row.IsSetting() && row.isUpdated;
        if (has) {
            m_rows[m_used++] = &row;
        }
        return has;
    }

    constexpr void AddThoseAfter(const ScanRow (&rows)[count], std::wstring_view key) {
        for (const ScanRow& row : rows) {
            if (row.updateAfter == key) {
                Add(row);
            }
        }
    }

    std::array<const ScanRow*, count> m_rows{};
    std::size_t m_used = 0;
};

template <const auto& rows>
constexpr UpdateOrder kUpdateOrder(rows);

// A main group replaces its whole word but AllowCfg and the switch of the exclusion group.
constexpr uint32_t kMainMask = ~(Mask(kAllowCfg) | kExcludeCallowayProductBit);

// A spyware group replaces what its fields can set.
constexpr uint32_t SpywareMask(std::span<const ScanRow> rows) {
    uint32_t mask = 0;
    for (const ScanRow& row : rows) {
        mask |= row.bits;
        if (row.choice != nullptr) {
            mask |= row.choice->stored[0].bits | row.choice->stored[1].bits;
        }
    }
    return mask & ~Mask(kAllowCfg);
}

// ---- values in database order ----

constexpr ScanNumber kNumbers[] = {
    &Values::flags,
    &Values::compressedLayer,
    &Values::oleLayer,
    &Values::possibleVirusCustActInActiveAct,
    &Values::frequency,
    &Values::hour,
    &Values::minute,
    &Values::amPm,
    &Values::dayOfMonth,
    &Values::dayOfWeek,
    &Values::weekOrdinalOfMonth,
    &Values::weekdayOfMonth,
};
constexpr std::span<const ScanNumber> kScheduledNumbers{kNumbers};
constexpr std::span<const ScanNumber> kMainNumbers = kScheduledNumbers.first(4);
constexpr std::span<const ScanNumber> kFlagsOnly = kScheduledNumbers.first(1);

constexpr ScanText kMainTexts[] = {&Values::extList, &Values::moveDir, &Values::cleanFailedMoveDir,
                                   &Values::custAction};
constexpr ScanText kExclusionTexts[] = {&Values::excludedFolder, &Values::excludedFile, &Values::excludedExt};
constexpr ScanText kSpywareTexts[] = {&Values::excludeFileExtList};

using enum ScanType;
using enum ScanGroupKind;

}  // namespace

constexpr std::array<ScanGroup, kScanGroupCount> kScanGroups{{
    {MS, Main, L"MSCfg", L"ms", L"Manual Scan Configuration", 0x1, L"DB_GET_MSCF", kManual, kMainNumbers, kMainTexts,
     kUpdateOrder<kManual>.Rows(), kMainMask},
    {MS, Spyware, L"SpyMSCfg", L"", L"Spyware Manual Scan Configuration", 0x1, L"DB_GET_SPYWARE_MSCF", kSpywareManual,
     kFlagsOnly, kSpywareTexts, kUpdateOrder<kSpywareManual>.Rows(), SpywareMask(kSpywareManual)},
    {MS, Exclusion, L"MSCfgEx", L"msex", L"Manual Scan Configuration Ex", 0x100, L"DB_GET_MSCF", kExclusion, kFlagsOnly,
     kExclusionTexts, kUpdateOrder<kExclusion>.Rows(), kExcludeCallowayProductBit},

    {RT, Main, L"RTCfg", L"rt", L"Real Time Scan Configuration", 0x2, L"DB_GET_RTCF", kRealTime, kMainNumbers,
     kMainTexts, kUpdateOrder<kRealTime>.Rows(), kMainMask},
    {RT, Spyware, L"SpyRTCfg", L"", L"Spyware Real Time Scan Configuration", 0x2, L"DB_GET_SPYWARE_RTCF",
     kSpywareRealTime, kFlagsOnly, kSpywareTexts, kUpdateOrder<kSpywareRealTime>.Rows(), SpywareMask(kSpywareRealTime)},
    {RT, Exclusion, L"RTCfgEx", L"rtex", L"Real Time Scan Configuration Ex", 0x4000, L"DB_GET_RTCF", kExclusion,
     kFlagsOnly, kExclusionTexts, kUpdateOrder<kExclusion>.Rows(), kExcludeCallowayProductBit},

    {PS, Main, L"PSCfg", L"ps", L"Prescheduled Scan Configuration", 0x4, L"DB_GET_PSCF", kPrescheduled,
     kScheduledNumbers, kMainTexts, kUpdateOrder<kPrescheduled>.Rows(), kMainMask},
    {PS, Spyware, L"SpyPSCfg", L"", L"Spyware Prescheduled Scan Configuration", 0x4, L"DB_GET_SPYWARE_PSCF",
     kSpywarePrescheduled, kFlagsOnly, kSpywareTexts, kUpdateOrder<kSpywarePrescheduled>.Rows(),
     SpywareMask(kSpywarePrescheduled)},
    {PS, Exclusion, L"PSCfgEx", L"psex", L"Prescheduled Scan Configuration Ex", 0x8000, L"DB_GET_PSCF", kExclusion,
     kFlagsOnly, kExclusionTexts, kUpdateOrder<kExclusion>.Rows(), kExcludeCallowayProductBit},

    {SN, Main, L"SNCfg", L"sn", L"Scan Now Configuration", 0x400, L"DB_GET_SNCF", kScanNow, kMainNumbers, kMainTexts,
     kUpdateOrder<kScanNow>.Rows(), kMainMask},
    {SN, Spyware, L"SpySNCfg", L"", L"Spyware Scan Now Configuration", 0x400, L"DB_GET_SPYWARE_SNCF", kSpywareScanNow,
     kFlagsOnly, kSpywareTexts, kUpdateOrder<kSpywareScanNow>.Rows(), SpywareMask(kSpywareScanNow)},
    {SN, Exclusion, L"SNCfgEx", L"snex", L"Scan Now Configuration Ex", 0x10000, L"DB_GET_SNCF", kExclusion, kFlagsOnly,
     kExclusionTexts, kUpdateOrder<kExclusion>.Rows(), kExcludeCallowayProductBit},
}};

namespace {

constexpr bool GroupsAreInPlace() {
    uint32_t flags = 0;
    for (std::size_t i = 0; i < kScanGroups.size(); ++i) {
        if (ScanGroupIndex(kScanGroups[i].type, kScanGroups[i].kind) != i) {
            return false;
        }
        flags |= kScanGroups[i].configFlag;
    }
    return flags == kAllScanConfigFlags;
}
static_assert(GroupsAreInPlace());

}  // namespace

}  // namespace wrb
