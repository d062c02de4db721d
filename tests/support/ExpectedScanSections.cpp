#include "ExpectedScanSections.h"

#include <cwchar>
#include <map>
#include <regex>

namespace wrb::test {
namespace {

constexpr const wchar_t* kTypes[] = {L"Manual Scan", L"Real Time Scan", L"Prescheduled Scan", L"Scan Now"};

constexpr wchar_t kExclusion[] =
    L"UID=uid ExcludeCallowayProduct=b16:1 ExcludedFolder=t4: ExcludedFile=t5: ExcludedExt=t6:";

// clang-format off
// By kind (main, exclusion, spyware), then by type.
constexpr const wchar_t* kKeys[] = {
    L"UID=uid Enable=b0:1 IntelliScan=b8:0 ActiveAction=b9:0 AllowCfg=b1:0 ScanMemory=b2:1 ScanBoot=b3:1 "
    L"ScanCompressed=b4:1 OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
    L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 CompressedLayer=n0:20 "
    L"ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b11:1 BkUpIfClean=b6:1 "
    L"MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp ScanHiddenFolder=b7:1 CustAction=t3:Universe-5-4 "
    L"EnableUniAct=b12:1 ScanNetwork=b13:0 ScanSpeed=speed:0 IntelliTrap=b24:1 EnableAggressiveClean=b20:0 "
    L"Reserved=nothing",
    L"UID=uid Enable=b0:1 IntelliScan=b8:0 ActiveAction=b9:0 AllowCfg=b1:0 ScanBoot=b2:1 ScanShutDown=b3:1 "
    L"ScanCompressed=b4:1 RavageScanMemory=b30:0 OleExploitDetection=b29:1 OleLayer=n1:3 "
    L"EnablePossibleVirusCustActInActiveAct=b26:0 PossibleVirusCustActInActiveAct=n2:4 "
    L"SystemCleanForPossibleVirus=b27:0 DispPossibleVirusFoundAlert=b28:1 USBBootScan=b17:0 USBScanTouch=b18:0 "
    L"CompressedLayer=n0:20 ScanSpyware=b7:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b12:1 "
    L"BkUpIfClean=b6:1 MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp ScanIncoming=b10:1 ScanOutgoing=b11:0 "
    L"EnableUniAct=b13:1 CustAction=t3:Universe-5-4 ScanNetwork=b14:0 PopVirusFoundAlert=b15:1 IntelliTrap=b24:1 "
    L"AtseCveExploitAction=b25:0 EnableAggressiveClean=b20:0 Reserved=nothing",
    L"UID=uid Enable=b0:1 IntelliScan=b11:0 ActiveAction=b12:0 AllowCfg=b1:0 ScanMemory=b2:1 ScanBoot=b3:1 "
    L"ScanCompressed=b4:1 OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
    L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 DispPossibleVirusFoundAlert=b28:1 "
    L"CompressedLayer=n0:20 ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b13:1 "
    L"Frequency=n3:1 Hour=n4:12 Minute=n5:0 AmPm=n6:1 DayOfMonth=n7:1 DayOfWeek=n8:7 WeekOrdinalOfMonth=n9:1 "
    L"WeekdayOfMonth=n10:1 BkUpIfClean=b9:1 MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp "
    L"CustAction=t3:Universe-5-4 EnableUniAct=b14:1 PopVirusFoundAlert=b15:1 ScanSpeed=speed:0 IntelliTrap=b24:1 "
    L"EnableAggressiveClean=b20:0 Reserved=nothing",
    L"UID=uid IntelliScan=b8:0 ActiveAction=b9:0 ScanMemory=b2:1 ScanBoot=b3:1 ScanCompressed=b4:1 "
    L"OleExploitDetection=b29:1 OleLayer=n1:3 EnablePossibleVirusCustActInActiveAct=b26:0 "
    L"PossibleVirusCustActInActiveAct=n2:4 SystemCleanForPossibleVirus=b27:0 CompressedLayer=n0:20 "
    L"ScanSpyware=b10:1 ScanAllFiles=b5:1 ExtList=t0:EXT EnableExclusion=b11:1 BkUpIfClean=b6:1 "
    L"MoveDir=t1:\\temp CleanFailedMoveDir=t2:\\temp CustAction=t3:Universe-5-4 EnableUniAct=b12:1 "
    L"ScanHiddenFolder=b7:0 ScanSpeed=speed:0 IntelliTrap=b24:1 Enable=b0:1 ScanMethod=b25:0 "
    L"EnableAggressiveClean=b20:0 Reserved=nothing",
    kExclusion, kExclusion, kExclusion, kExclusion,
    L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action16:1 EnableSpyExclusion=b24:1 "
    L"ExcludeFileExtList=t7:MP3;",
    L"UID=uid Enable=b0:1 AllowCfg=b1:0 ActionType=actionRT:1 PopSpywareFoundAlert=b18:0",
    L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action17:1 PopSpywareFoundAlert=b18:0 "
    L"EnableSpyExclusion=b24:1 ExcludeFileExtList=t7:MP3;",
    L"UID=uid Enable=b0:1 AllowCfg=b1:0 ScanType=type:1 ActionType=action16:1 PopSpywareFoundAlert=b18:0 "
    L"EnableSpyExclusion=b24:1 ExcludeFileExtList=t7:MP3;",
};

constexpr wchar_t kDefaultExtList[] = L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386";

using V = ScanGroupValues;
constexpr uint32_t V::*kNumbers[] = {
    &V::compressedLayer, &V::oleLayer, &V::possibleVirusCustActInActiveAct, &V::frequency, &V::hour, &V::minute, &V::amPm,
    &V::dayOfMonth, &V::dayOfWeek, &V::weekOrdinalOfMonth, &V::weekdayOfMonth,
};
constexpr std::wstring V::*kTexts[] = {
    &V::extList, &V::moveDir, &V::cleanFailedMoveDir, &V::custAction, &V::excludedFolder, &V::excludedFile, &V::excludedExt,
    &V::excludeFileExtList,
};

std::wstring ValueOf(const std::wstring& source, std::wstring_view uid, const V& values) {
    const auto bit = [&](int number) { return (values.flags >> number & 1) != 0; };
    const std::map<std::wstring, std::wstring> named{
        {L"uid", std::wstring(uid)}, {L"nothing", L""}, {L"type", bit(8) ? L"1" : L"2"},
        {L"speed", bit(17) ? L"1" : bit(18) ? L"2" : L"0"}, {L"actionRT", bit(2) ? L"2" : bit(3) ? L"0" : L"1"},
        {L"action16", bit(16) ? L"1" : L"2"}, {L"action17", bit(17) ? L"2" : L"1"},
    };
    // clang-format on
    if (const auto found = named.find(source); found != named.end()) {
        return found->second;
    }
    const int index = std::stoi(source.substr(1));
    return source[0] == L'b'   ? std::to_wstring(bit(index))
           : source[0] == L'n' ? std::to_wstring(static_cast<int32_t>(values.*kNumbers[index]))
                               : values.*kTexts[index];
}

std::vector<ExpectedSection> ParseSections() {
    constexpr ScanGroupKind kKinds[] = {ScanGroupKind::Main, ScanGroupKind::Exclusion, ScanGroupKind::Spyware};
    const std::wregex word(L"(\\w+)=(\\w+):?(\\S*)");
    std::vector<ExpectedSection> all;
    for (std::size_t i = 0; i < std::size(kKeys); ++i) {
        const ScanGroupKind kind = kKinds[i / 4];
        const std::wstring name = (kind == ScanGroupKind::Spyware ? L"Spyware " : L"") + std::wstring(kTypes[i % 4]) +
                                  L" Configuration" + (kind == ScanGroupKind::Exclusion ? L" Ex" : L"");
        all.push_back({static_cast<ScanType>(i % 4), kind, name, {}});
        for (std::wcregex_iterator at(kKeys[i], kKeys[i] + std::wcslen(kKeys[i]), word), end; at != end; ++at) {
            all.back().keys.push_back({(*at)[1], (*at)[2], (*at)[3] == L"EXT" ? kDefaultExtList : (*at)[3].str()});
        }
    }
    return all;
}

}  // namespace

std::wstring ExpectedSection::Text(std::wstring_view uid, const ScanGroupValues& values) const {
    std::wstring text = L"[" + name + L"]\n";
    for (const ExpectedKey& key : keys) {
        text += key.key + L"=" + ValueOf(key.source, uid, values) + L"\n";
    }
    return text;
}

const std::vector<ExpectedSection>& ExpectedScanSections() {
    static const std::vector<ExpectedSection> sections = ParseSections();
    return sections;
}

ScanGroupValues DistinctScanValues(uint32_t flags) {
    ScanGroupValues values;
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
