#include "ScanUpdateLog.h"

#include <string>

#include "DebugLog.h"
#include "Text.h"

namespace wrb {
namespace {

void Add(std::wstring& line, const std::wstring& text) {
    line.append(1, L'[').append(text).append(1, L']');
}

void Add(std::wstring& line, uint32_t number) {
    Add(line, std::to_wstring(static_cast<int32_t>(number)));
}

// In an agent's line the texts are those that the database keeps, which has one move folder.
bool ShowsBothFolders(const ScanGroup& group, ScanUpdateLevel level) {
    return level == ScanUpdateLevel::Ini || (level == ScanUpdateLevel::All && group.type == ScanType::RT);
}

// The prescheduled line has twelve numbers: those of the record, and the one that its message carries as a number and
// its record as bits.
void AddNumbers(std::wstring& line, const ScanGroup& group, const ScanUpdate& update, const ScanGroupValues& values) {
    for (const ScanNumber member : group.numbers.subspan(1)) {
        Add(line, values.*member);
    }
    for (const ScanRow& row : group.rows) {
        if (group.type == ScanType::PS && row.kind == ScanRowKind::Choice) {
            Add(line, row.choice->ValueOf(update.value));
        }
    }
}

std::wstring MainLine(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update,
                      const ScanGroupValues& values) {
    const wchar_t* const who = level == ScanUpdateLevel::Agent ? uid : level == ScanUpdateLevel::All ? L"All" : L"ini";
    std::wstring line = FormatWide(L"set %s:[%s][%08x][%08x]", group.logTag.data(), who, update.value, update.mask);
    AddNumbers(line, group, update, values);
    for (const ScanText member : group.texts) {
        if (member != &ScanGroupValues::cleanFailedMoveDir || ShowsBothFolders(group, level)) {
            Add(line, values.*member);
        }
    }
    return line;
}

// The blank before the colon is how readers of the log know these lines. The real-time line of the INI ends early.
std::wstring ExclusionLine(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update,
                           const ScanGroupValues& values) {
    const wchar_t* const who = level == ScanUpdateLevel::Agent ? uid : level == ScanUpdateLevel::All ? L"all" : L"ini";
    std::wstring line = FormatWide(L"set %s :[%s][%08x][%08x]", group.logTag.data(), who, update.value, update.mask);
    for (const ScanText member : group.texts) {
        Add(line, values.*member);
    }
    if (level != ScanUpdateLevel::Ini || group.type != ScanType::RT) {
        Add(line, group.configFlag);
        Add(line, update.flag);
    }
    return line;
}

std::wstring SpywareLine(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update) {
    const wchar_t* const suffix = level == ScanUpdateLevel::Agent ? L""
                                  : level == ScanUpdateLevel::All ? L"All"
                                                                  : L"Ini";
    std::wstring line = FormatWide(L"[cmdhm_Set%s%s]", group.name.data(), suffix);
    if (level == ScanUpdateLevel::Agent) {
        Add(line, uid);
    }
    return line + FormatWide(L"[%08x][%08x]", update.value, update.mask);
}

std::wstring Line(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update,
                  const ScanGroupValues& values) {
    switch (group.kind) {
        case ScanGroupKind::Main:
            return MainLine(group, level, uid, update, values);
        case ScanGroupKind::Exclusion:
            return ExclusionLine(group, level, uid, update, values);
        case ScanGroupKind::Spyware:
            break;
    }
    return SpywareLine(group, level, uid, update);
}

}  // namespace

void LogScanUpdate(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update,
                   const ScanGroupValues& values) {
    WRB_LOG(kLogDebug8, L"%s", Line(group, level, uid, update, values).c_str());
    if (group.kind == ScanGroupKind::Spyware && group.type != ScanType::RT) {
        WRB_LOG(kLogDebug8, L"[cmdhm_Set%s][Exclusion - file extension list:%s]", group.name.data(),
                values.excludeFileExtList.c_str());
    }
}

}  // namespace wrb
