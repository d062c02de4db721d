#include "ScanLog.h"

#include <string>

#include "DebugLog.h"
#include "Text.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrCommon/cmdhm_ScanCfg.cpp"

namespace wrb {
namespace {

void Add(std::wstring& line, const std::wstring& text) {
    line.append(1, L'[').append(text).append(1, L']');
}

void Add(std::wstring& line, uint32_t number) {
    Add(line, std::to_wstring(static_cast<int32_t>(number)));
}

void AddNumbers(std::wstring& line, const ScanGroup& group, const ScanGroupValues& values) {
    for (const ScanNumber member : group.numbers.subspan(1)) {
        Add(line, values.*member);
    }
}

// Of a main or an exclusion group.
std::wstring ValuesLine(const ScanGroup& group, const std::wstring& uid, const ScanGroupValues& values) {
    const wchar_t* const who = uid.empty() ? L"ini" : uid.c_str();
    std::wstring line = FormatWide(L"get %s:[%s][%08x]", group.logTag.data(), who, values.flags);
    AddNumbers(line, group, values);
    for (const ScanText member : group.texts) {
        Add(line, values.*member);
    }
    return line;
}

std::wstring SpywareValuesLine(const ScanGroup& group, const std::wstring& uid, uint32_t flags) {
    return uid.empty() ? FormatWide(L"[cmdhm_Get%sIni][%08x]", group.name.data(), flags)
                       : FormatWide(L"[cmdhm_Get%s][%s][%08x]", group.name.data(), uid.c_str(), flags);
}

void LogSpywareList(const wchar_t* verb, const ScanGroup& group, const ScanGroupValues& values) {
    if (group.kind == ScanGroupKind::Spyware && group.type != ScanType::RT) {
        WRB_LOG(kLogDebug8, L"[cmdhm_%s%s][Exclusion - file extension list:%s]", verb, group.name.data(),
                values.excludeFileExtList.c_str());
    }
}

// The database keeps one move folder.
bool ShowsText(const ScanGroup& group, ScanUpdateLevel level, ScanText member) {
    return member != &ScanGroupValues::cleanFailedMoveDir || level == ScanUpdateLevel::Ini ||
           (level == ScanUpdateLevel::All && group.type == ScanType::RT);
}

// Of a main or an exclusion group, which differ in a blank and in the word for every agent. Of exclusion groups the
// real-time line of the INI has no bit and no flag.
std::wstring SettingsLine(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanWrite& update,
                          const ScanGroupValues& values) {
    const bool isExclusion = group.kind == ScanGroupKind::Exclusion;
    const wchar_t* const everyAgent = isExclusion ? L"all" : L"All";
    const wchar_t* const who = level == ScanUpdateLevel::Agent ? uid
                               : level == ScanUpdateLevel::All ? everyAgent
                                                               : L"ini";
    std::wstring line = FormatWide(isExclusion ? L"set %s :[%s][%08x][%08x]" : L"set %s:[%s][%08x][%08x]",
                                   group.logTag.data(), who, update.value, update.mask);
    AddNumbers(line, group, values);
    for (const ScanRow& row : group.rows) {
        if (group.type == ScanType::PS && row.kind == ScanRowKind::Choice) {
            Add(line, row.choice->ValueOf(update.value));
        }
    }
    for (const ScanText member : group.texts) {
        if (ShowsText(group, level, member)) {
            Add(line, values.*member);
        }
    }
    if (isExclusion && (level != ScanUpdateLevel::Ini || group.type != ScanType::RT)) {
        Add(line, group.configFlag);
        Add(line, update.flag);
    }
    return line;
}

std::wstring SpywareLine(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanWrite& update) {
    const wchar_t* const suffix = level == ScanUpdateLevel::Agent ? L""
                                  : level == ScanUpdateLevel::All ? L"All"
                                                                  : L"Ini";
    std::wstring line = FormatWide(L"[cmdhm_Set%s%s]", group.name.data(), suffix);
    if (level == ScanUpdateLevel::Agent) {
        Add(line, uid);
    }
    return line + FormatWide(L"[%08x][%08x]", update.value, update.mask);
}

}  // namespace

void LogScanValues(const ScanGroup& group, const std::wstring& uid, const ScanGroupValues& values) {
    const bool isSpyware = group.kind == ScanGroupKind::Spyware;
    WRB_LOG(kLogDebug8, L"%s",
            (isSpyware ? SpywareValuesLine(group, uid, values.flags) : ValuesLine(group, uid, values)).c_str());
    LogSpywareList(L"Get", group, values);
}

void LogScanUpdate(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanWrite& update,
                   const ScanGroupValues& values) {
    const bool isSpyware = group.kind == ScanGroupKind::Spyware;
    WRB_LOG(
        kLogDebug8, L"%s",
        (isSpyware ? SpywareLine(group, level, uid, update) : SettingsLine(group, level, uid, update, values)).c_str());
    LogSpywareList(L"Set", group, values);
}

}  // namespace wrb
