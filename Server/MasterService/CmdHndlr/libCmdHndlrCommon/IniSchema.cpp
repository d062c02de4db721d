#include "IniSchema.h"

#include <algorithm>

#include "DebugLog.h"
#include "IgnoringCase.h"
#include "KeyedSettings.h"
#include "ScanGroup.h"
#include "Text.h"
#include "TicketSettings.h"

namespace wrb {
namespace {

constexpr int64_t kUnsigned = UINT32_MAX;
constexpr int kMostWarnings = 50;  // a file
constexpr wchar_t kServerSection[] = L"INI_SERVER_SECTION";

constexpr IniKey Number(std::wstring_view name, int64_t least = 0, int64_t most = INT32_MAX) {
    return {name, false, least, most};
}

constexpr IniKey Switch(std::wstring_view name) {
    return Number(name, 0, 1);
}

IniSection ScanSection(const ScanGroup& group) {
    IniSection section{IniFile::Scan, group.section, {}};
    for (const ScanRow& row : group.rows) {
        if (row.kind == ScanRowKind::Text || row.kind == ScanRowKind::CustomActionPair) {
            section.keys.push_back({row.key});
        } else if (row.IsSetting()) {
            section.keys.push_back(row.kind == ScanRowKind::Bit ? Switch(row.key) : Number(row.key, 0, 255));
        }
    }
    return section;
}

void AddKeyedSections(std::vector<IniSection>& sections, KeyedSettings&& settings) {
    settings.ForEach([&](const wchar_t* name, const SettingKey& key, const SettingValue&) {
        if (sections.empty() || sections.back().name != name) {
            sections.push_back({IniFile::Scan, name, {}});
        }
        sections.back().keys.push_back(key.kind == KeyKind::Text     ? IniKey{key.name}
                                       : key.kind == KeyKind::Switch ? Switch(key.name)
                                                                     : Number(key.name));
    });
}

IniSection TicketSection() {
    IniSection section{IniFile::Server, L"LOG_TICKET_SECTION", {}};
    static const std::vector<std::wstring> names = [] {
        std::vector<std::wstring> all;
        for (uint32_t i = 0; i < static_cast<uint32_t>(TicketSetting::kCount); ++i) {
            all.push_back(AnsiToWide(TicketSettings::Key(static_cast<TicketSetting>(i))));
        }
        return all;
    }();
    for (const std::wstring& name : names) {
        section.keys.push_back(Number(name, 0, kUnsigned));
    }
    return section;
}

std::vector<IniSection> OtherSections() {
    return {
        {IniFile::Scan,
         L"INI_MAJOR_VIRUS_TYPE_SECTION",
         {Number(L"Count", 0, 1000),
          {L"Name_%03d"},
          {L"1st_Act_%03d"},
          {L"2nd_Act_%03d"},
          {L"Universe"},
          {L"1st_Act_Universe"}}},
        {IniFile::Scan, L"GLN_FEEDBACK_SECTION", {Number(L"GLNFeedbackEnabled"), Number(L"GLNFeedbackMaxSizeInK")}},
        {IniFile::Scan,
         L"Firewall Alert",
         {Number(L"Enable"),
          Number(L"WindowInSec", 1, 86'400),
          Number(L"IntrusionThreshold", 0, kUnsigned),
          Number(L"RuleThreshold", 0, kUnsigned),
          Number(L"TotalThreshold", 0, kUnsigned),
          Number(L"EventLog"),
          Number(L"Mail"),
          {L"MailFrom"},
          {L"MailTo"},
          {L"SmtpServer"},
          Number(L"SmtpPort", 1, 65'535),
          Number(L"SmtpSecurity", 0, 2),
          {L"SmtpUser"},
          {L"SmtpPassword"}}},
        {IniFile::Scan,
         kServerSection,
         {Number(L"Command_Handler_Static_Thread_Number", 1, 254),
          Number(L"Command_Handler_Maxium_Thread_Number", 0, kUnsigned)}},
        {IniFile::Scan, L"Global Setting", {}},
        {IniFile::Scan, L"INI_OTHER_UPDATE_SOURCE_SECTION", {}},
        {IniFile::Scan, L"INI_SCAN_SERVICE_LIST_SECTION", {}},
        {IniFile::Scan, L"INI_SERVICE_MODEL_SECTION", {}},
        {IniFile::Scan, L"INI_LOCAL_SCAN_SECTION", {}},
        {IniFile::Scan, L"INI_OPP_SECTION", {}},
        {IniFile::Server,
         kServerSection,
         {{L"StringProtectionKey"},
          {L"CommandPipeAccounts"},
          Number(L"CommandConnections", 1, 254),
          Number(L"CommandQueueLength", 1, 100'000),
          Number(L"CommandMemoryInM", 1, 1024),
          Number(L"MaxCGIPostSizeInK", 0, 1'048'576),
          {L"UploadFolders"},
          Switch(L"RequireSignedLibraries"),
          {L"CFWLogQueryCondition"},
          Number(L"CFWShowAllPV"),
          Number(L"ReplyTimeoutSeconds", 1, 3600),
          Number(L"ServiceTimeoutSeconds", 1, 3600),
          Number(L"SlowReplies", 1, 254),
          Number(L"UploadSeconds", 1, 3600),
          Number(L"AnswerMemoryInM", 1, 1024),
          {L"BackEndStore"}}},
        {IniFile::Server, L"Console", {Switch(L"RequireUser"), {L"LogFolder"}}},
        {IniFile::Server, L"INI_PRODUCT_SECTION", {{L"ProductName"}, {L"ProductVersion"}, {L"BuildNumber"}}},
        {IniFile::Server,
         L"VEXOR_BMPolicy",
         {Number(L"Count", 0, 1000), {L"PolicyId%d"}, Number(L"Action%d"), Number(L"Enable%d")}},
    };
}

std::vector<IniSection> MakeSections() {
    std::vector<IniSection> sections = OtherSections();
    std::ranges::transform(kScanGroups, std::back_inserter(sections), ScanSection);
    AddKeyedSections(sections, CSettingContainerCriticalSetting());
    AddKeyedSections(sections, CSettingContainerComponentVersion());
    sections.push_back(TicketSection());
    return sections;
}

// Whether `key` is `name`, or a name with a number in the place of "%d".
bool Matches(std::wstring_view key, std::wstring_view name) {
    const std::size_t percent = name.find(L'%');
    if (percent == name.npos) {
        return EqualIgnoringCase(key, name);
    }
    return key.size() > percent && EqualIgnoringCase(key.substr(0, percent), name.substr(0, percent)) &&
           key.find_first_not_of(L"0123456789", percent) == key.npos;
}

void WarnOfSection(CINICache& ini, const wchar_t* file, const IniSection& section, int& left) {
    constexpr int kBypass = 1;
    std::wstring lines;
    ini.readINISection(lines, section.name.data(), kBypass);
    for (std::wstring_view rest = lines; !rest.empty() && left > 0;) {
        const std::wstring key(rest.substr(0, rest.find(L'=')));
        rest.remove_prefix(std::min(rest.size(), rest.find(L'\n') + 1));
        if (FindIniKey(section, key) == nullptr) {
            WRB_LOG(kLogWarning, L"%s - the section [%s] of %s has the unknown key %s", L"WarnOfUnknownIniKeys",
                    section.name.data(), file, key.c_str());
            --left;
        }
    }
}

}  // namespace

std::span<const IniSection> KnownIniSections() {
    static const std::vector<IniSection> sections = MakeSections();
    return sections;
}

const IniSection* FindIniSection(IniFile file, std::wstring_view name) {
    const auto sections = KnownIniSections();
    const auto found = std::ranges::find_if(sections, [&](const IniSection& section) {
        return section.file == file && EqualIgnoringCase(section.name, name);
    });
    return found == sections.end() ? nullptr : &*found;
}

const IniKey* FindIniKey(const IniSection& section, std::wstring_view key) {
    const auto found =
        std::ranges::find_if(section.keys, [key](const IniKey& known) { return Matches(key, known.name); });
    return found == section.keys.end() ? nullptr : &*found;
}

void WarnOfUnknownIniKeys(CINICache& scanIni, CINICache& serverIni) {
    int left[] = {kMostWarnings, kMostWarnings};
    for (const IniSection& section : KnownIniSections()) {
        if (!section.keys.empty()) {
            const bool isScan = section.file == IniFile::Scan;
            WarnOfSection(isScan ? scanIni : serverIni, isScan ? L"wrbscan.ini" : L"wrbserver.ini", section,
                          left[isScan ? 0 : 1]);
        }
    }
}

}  // namespace wrb
