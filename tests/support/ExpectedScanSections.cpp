#include "ExpectedScanSections.h"

#include <map>
#include <sstream>
#include <utility>

namespace wrb::test {
namespace {

constexpr struct {
    ScanType type;
    ScanGroupKind kind;
    const wchar_t* name;
    const wchar_t* keys;
} kSections[] = {
    {ScanType::MS, ScanGroupKind::Main, L"Manual Scan Configuration",
     L"UID=uid Enable=b0:1 IntelliScan=b8:0 ActiveAction=b9:0 AllowCfg=b1:0 ScanMemory=b2:1 ScanBoot=b3:1 "
     L"ScanCompressed=b4:1 OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
     L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 CompressedLayer=n0:20 "
     L"ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b11:1 BkUpIfClean=b6:1 "
     L"MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp ScanHiddenFolder=b7:1 CustAction=t3:Universe-5-4 "
     L"EnableUniAct=b12:1 ScanNetwork=b13:0 ScanSpeed=speed:0 IntelliTrap=b24:1 EnableAggressiveClean=b20:0 "
     L"Reserved=nothing"},
    {ScanType::RT, ScanGroupKind::Main, L"Real Time Scan Configuration",
     L"UID=uid Enable=b0:1 IntelliScan=b8:0 ActiveAction=b9:0 AllowCfg=b1:0 ScanBoot=b2:1 ScanShutDown=b3:1 "
     L"ScanCompressed=b4:1 RavageScanMemory=b30:0 OleExploitDetection=b29:1 OleLayer=n1:3 "
     L"EnablePossibleVirusCustActInActiveAct=b26:0 PossibleVirusCustActInActiveAct=n2:4 "
     L"SystemCleanForPossibleVirus=b27:0 DispPossibleVirusFoundAlert=b28:1 USBBootScan=b17:0 USBScanTouch=b18:0 "
     L"CompressedLayer=n0:20 ScanSpyware=b7:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b12:1 "
     L"BkUpIfClean=b6:1 MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp ScanIncoming=b10:1 ScanOutgoing=b11:0 "
     L"EnableUniAct=b13:1 CustAction=t3:Universe-5-4 ScanNetwork=b14:0 PopVirusFoundAlert=b15:1 IntelliTrap=b24:1 "
     L"AtseCveExploitAction=b25:0 EnableAggressiveClean=b20:0 Reserved=nothing"},
    {ScanType::PS, ScanGroupKind::Main, L"Prescheduled Scan Configuration",
     L"UID=uid Enable=b0:1 IntelliScan=b11:0 ActiveAction=b12:0 AllowCfg=b1:0 ScanMemory=b2:1 ScanBoot=b3:1 "
     L"ScanCompressed=b4:1 OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
     L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 DispPossibleVirusFoundAlert=b28:1 "
     L"CompressedLayer=n0:20 ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b13:1 "
     L"Frequency=n3:1 Hour=n4:12 Minute=n5:0 AmPm=n6:1 DayOfMonth=n7:1 DayOfWeek=n8:7 WeekOrdinalOfMonth=n9:1 "
     L"WeekdayOfMonth=n10:1 BkUpIfClean=b9:1 MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp "
     L"CustAction=t3:Universe-5-4 EnableUniAct=b14:1 PopVirusFoundAlert=b15:1 ScanSpeed=speed:0 IntelliTrap=b24:1 "
     L"EnableAggressiveClean=b20:0 Reserved=nothing"},
    {ScanType::SN, ScanGroupKind::Main, L"Scan Now Configuration",
     L"UID=uid IntelliScan=b8:0 ActiveAction=b9:0 ScanMemory=b2:1 ScanBoot=b3:1 ScanCompressed=b4:1 "
     L"OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
     L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 CompressedLayer=n0:20 "
     L"ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b11:1 BkUpIfClean=b6:1 MoveDir=t1:\\temp "
     L"CleanFailedMoveDir=t2:\\temp CustAction=t3:Universe-5-4 EnableUniAct=b12:1 ScanHiddenFolder=b7:0 "
     L"ScanSpeed=speed:0 IntelliTrap=b24:1 Enable=b0:1 ScanMethod=b25:0 EnableAggressiveClean=b20:0 "
     L"Reserved=nothing"},
#define WRB_EXCLUSION_KEYS L"UID=uid ExcludeCallowayProduct=b16:1 ExcludedFolder=t4: ExcludedFile=t5: ExcludedExt=t6:"
    {ScanType::MS, ScanGroupKind::Exclusion, L"Manual Scan Configuration Ex", WRB_EXCLUSION_KEYS},
    {ScanType::RT, ScanGroupKind::Exclusion, L"Real Time Scan Configuration Ex", WRB_EXCLUSION_KEYS},
    {ScanType::PS, ScanGroupKind::Exclusion, L"Prescheduled Scan Configuration Ex", WRB_EXCLUSION_KEYS},
    {ScanType::SN, ScanGroupKind::Exclusion, L"Scan Now Configuration Ex", WRB_EXCLUSION_KEYS},
#undef WRB_EXCLUSION_KEYS
    {ScanType::MS, ScanGroupKind::Spyware, L"Spyware Manual Scan Configuration",
     L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action16:1 EnableSpyExclusion=b24:1 "
     L"ExcludeFileExtList=t7:MP3;"},
    {ScanType::RT, ScanGroupKind::Spyware, L"Spyware Real Time Scan Configuration",
     L"UID=uid Enable=b0:1 AllowCfg=b1:0 ActionType=actionRT:1 PopSpywareFoundAlert=b18:0"},
    {ScanType::PS, ScanGroupKind::Spyware, L"Spyware Prescheduled Scan Configuration",
     L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action17:1 PopSpywareFoundAlert=b18:0 "
     L"EnableSpyExclusion=b24:1 ExcludeFileExtList=t7:MP3;"},
    {ScanType::SN, ScanGroupKind::Spyware, L"Spyware Scan Now Configuration",
     L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action16:1 PopSpywareFoundAlert=b18:0 "
     L"EnableSpyExclusion=b24:1 ExcludeFileExtList=t7:MP3;"},
};

constexpr const wchar_t* kDefaultExtList = L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386";

tagExpectedKey ParseKey(const std::wstring& word) {
    const std::size_t equals = word.find(L'=');
    const std::size_t colon = word.find(L':');
    tagExpectedKey key{word.substr(0, equals), word.substr(equals + 1, colon - equals - 1), {}, colon != word.npos};
    if (key.inIni) {
        key.iniDefault = word.substr(colon + 1);
        if (key.iniDefault == L"EXT") {
            key.iniDefault = kDefaultExtList;
        }
    }
    return key;
}

using V = tagScanGroupValues;
// clang-format off
constexpr uint32_t V::*kNumbers[] = {
    &V::compressedLayer, &V::oleLayer, &V::possibleVirusCustActInActiveAct, &V::frequency, &V::hour, &V::minute, &V::amPm,
    &V::dayOfMonth, &V::dayOfWeek, &V::weekOrdinalOfMonth, &V::weekdayOfMonth,
};
// clang-format on
constexpr std::wstring V::*kTexts[] = {&V::extList,     &V::moveDir,           &V::cleanFailedMoveDir,
                                       &V::custAction,  &V::excludedFolder,    &V::excludedFile,
                                       &V::excludedExt, &V::excludeFileExtList};

std::wstring ValueOf(const std::wstring& source, std::wstring_view uid, const tagScanGroupValues& values) {
    const auto bit = [&](int number) { return (values.flags >> number & 1) != 0; };
    const std::map<std::wstring, std::wstring> named{
        // clang-format off
        {L"uid", std::wstring(uid)}, {L"nothing", L""}, {L"type", bit(8) ? L"1" : L"2"},
        {L"speed", bit(17) ? L"1" : bit(18) ? L"2" : L"0"}, {L"actionRT", bit(2) ? L"2" : bit(3) ? L"0" : L"1"},
        {L"action16", bit(16) ? L"1" : L"2"}, {L"action17", bit(17) ? L"2" : L"1"},
        // clang-format on
    };
    if (const auto found = named.find(source); found != named.end()) {
        return found->second;
    }
    const int index = std::stoi(source.substr(1));
    switch (source[0]) {
        case L'b':
            return bit(index) ? L"1" : L"0";
        case L'n':
            return std::to_wstring(static_cast<int32_t>(values.*kNumbers[index]));
        default:
            return values.*kTexts[index];
    }
}

}  // namespace

std::wstring tagExpectedSection::Text(std::wstring_view uid, const tagScanGroupValues& values) const {
    std::wstring text = L"[" + name + L"]\n";
    for (const tagExpectedKey& key : keys) {
        text += key.key + L"=" + ValueOf(key.source, uid, values) + L"\n";
    }
    return text;
}

const std::vector<tagExpectedSection>& ExpectedScanSections() {
    static const std::vector<tagExpectedSection> sections = [] {
        std::vector<tagExpectedSection> all;
        for (const auto& row : kSections) {
            tagExpectedSection section{row.type, row.kind, row.name, {}};
            std::wistringstream words(row.keys);
            for (std::wstring word; words >> word;) {
                section.keys.push_back(ParseKey(word));
            }
            all.push_back(std::move(section));
        }
        return all;
    }();
    return sections;
}

tagScanGroupValues DistinctScanValues(uint32_t flags) {
    tagScanGroupValues values;
    for (uint32_t i = 0; i < std::size(kNumbers); ++i) {
        values.*kNumbers[i] = i + 20;
    }
    values.oleLayer = 0xFFFFFFFF;
    values.possibleVirusCustActInActiveAct = 0x80000000;
    for (std::size_t i = 0; i < std::size(kTexts); ++i) {
        values.*kTexts[i] = L"C:\\text = \x540D" + std::to_wstring(i);
    }
    values.excludedFolder.append(2000, L'f');
    values.flags = flags;
    return values;
}

}  // namespace wrb::test
