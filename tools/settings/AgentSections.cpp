#include "AgentSections.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "BmPolicyCache.h"
#include "DbBundle.h"
#include "DbPrivilege.h"
#include "IgnoringCase.h"
#include "KeyedSettings.h"
#include "ScanExplanation.h"
#include "SettingCatalog.h"
#include "cmdhm_Bundles.h"
#include "cmdhm_Common.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_Vexor.h"

namespace wrb {
namespace {

using Lines = std::vector<Explanation>;

// The agent that is explained, or without a uid the server. What several sections need is asked for once.
struct Subject {
    std::wstring uid;
    uint32_t changedBits = 0;
    std::optional<DbPrivilege> privilege{};

    bool ReadPrivilege() {
        if (DbPrivilege read; !privilege && dbGetPrivilegeW(uid.c_str(), read)) {
            privilege = read;
        }
        return privilege.has_value();
    }
};

// Whether the key is the format with a number in the place of its "%d".
bool HasFormat(std::wstring_view key, std::wstring_view format) {
    const std::size_t percent = format.find(L'%');
    if (percent == format.npos || !key.starts_with(format.substr(0, percent))) {
        return key == format;
    }
    const std::wstring_view tail = format.substr(format.find(L'd', percent) + 1);
    key.remove_prefix(percent);
    if (!key.ends_with(tail)) {
        return false;
    }
    key.remove_suffix(tail.size());
    return !key.empty() && key.find_first_not_of(L"0123456789") == key.npos;
}

void ExplainPrivilege(const DbPrivilege& privilege, DbPrivilegeBit bit, Explanation& line) {
    const auto number = static_cast<uint32_t>(bit);
    line.source = SettingSource::DatabaseBit;
    line.from = number < 32 ? L"DB_GET_PRIVILEGE, word 1" : L"DB_GET_PRIVILEGE, word 2";
    line.word = number < 32 ? privilege.word1 : privilege.word2;
    line.mask = uint32_t{1} << number % 32;
}

template <typename Values>
void ExplainRow(const BundleContent<Values>& content, Explanation& line) {
    line.source = SettingSource::DatabaseNumber;  // a count
    line.from = kBundle<Values>.command;
    for (const BundleRow<Values>& row : kBundle<Values>.rows) {
        if (!HasFormat(line.key, row.key)) {
            continue;
        }
        line.from += L", " + std::wstring(row.column, row.column + std::char_traits<char>::length(row.column));
        if (row.text != nullptr) {
            line.source = SettingSource::DatabaseText;
        }
        if constexpr (!kHasItems<Values>) {
            if (row.kind == BundleRowKind::Bit) {
                line.source = SettingSource::DatabaseBit;
                line.word = content.*row.number;
                line.mask = row.bits;
            }
        }
        return;
    }
}

template <typename Values>
bool ExplainBundle(Subject& subject, Lines& out) {
    std::wstring text;
    BundleContent<Values> content;  // for its words; lists have none
    if (!ReadBundle<Values>(text, subject.uid.c_str()) ||
        (!kHasItems<Values> && !AskDbBundle<Values>(subject.uid.c_str(), content, L"ExplainBundle")) ||
        !subject.ReadPrivilege()) {
        return false;
    }
    for (IniLine& line : SplitSections(text)) {
        Explanation each(std::move(line));
        const std::optional<DbPrivilegeBit> bit = FindPrivilege(each.key);
        bit ? ExplainPrivilege(*subject.privilege, *bit, each) : ExplainRow<Values>(content, each);
        each.groupBit = kBundle<Values>.configBit;
        each.isChanged = (subject.changedBits & each.groupBit) != 0;
        out.push_back(std::move(each));
    }
    return true;
}

void ExplainIniKey(Explanation& line) {
    line.from = L"wrbscan.ini";
    line.source = IsInScanIni(line.section, line.key) ? SettingSource::ScanIni : SettingSource::Default;
}

bool ExplainCritical(Subject& subject, Lines& out) {
    std::wstring text;
    const bool ofAgent = !subject.uid.empty();
    if (!GetCriticalSetting(text, subject.uid.c_str()) || (ofAgent && !subject.ReadPrivilege())) {
        return false;
    }
    for (IniLine& line : SplitSections(text)) {
        Explanation each(std::move(line));
        const std::optional<DbPrivilegeBit> bit = FindPrivilege(each.key);
        if (ofAgent && bit) {
            ExplainPrivilege(*subject.privilege, *bit, each);
        } else if (ofAgent && (each.key == L"Uninstall_Pwd" || each.key == L"Unload_Pwd")) {
            each.source = SettingSource::DatabaseText;
            each.from = L"DB_GET_CLIENT_PASSWORD";
        } else {
            ExplainIniKey(each);
        }
        out.push_back(std::move(each));
    }
    return true;
}

bool ExplainIniText(const std::wstring& text, Lines& out) {
    for (IniLine& line : SplitSections(text)) {
        ExplainIniKey(out.emplace_back(std::move(line)));
    }
    return true;
}

bool ExplainVersions(Subject&, Lines& out) {
    std::wstring text;
    return GetComponentVersions(text) && ExplainIniText(text, out);
}

bool ExplainGlobal(Subject&, Lines& out) {
    std::wstring text;
    return GetIniSection(text, L"Global Setting") && ExplainIniText(text, out);
}

bool ExplainVexor(Subject& subject, Lines& out) {
    std::wstring text;
    if (!cmdhm_GetVexorSetting(text, subject.uid.c_str(), BmPolicyCache().Policies())) {
        return false;
    }
    for (IniLine& line : SplitSections(text)) {
        Explanation& each = out.emplace_back(std::move(line));
        each.source = SettingSource::DatabaseText;
        each.from = each.section == L"VEXOR_BMPolicy"
                        ? L"DBV2_GET_VEXOR_CUSTOM_BM_CFG, and VEXOR_BMPolicy of wrbserver.ini"
                        : L"DB_GET_VEXOR_BM_CFG";
    }
    return true;
}

// The parts that follow the scan groups. Those of agents only have no server-wide form.
struct Part {
    std::wstring_view section;  // its first one; all its sections begin with `stem`
    std::wstring_view stem;
    bool ofAgents;
    bool (*explain)(Subject& subject, Lines& out);
};

template <typename Values>
constexpr Part BundlePart() {
    return {kBundle<Values>.section, kBundle<Values>.section, true, ExplainBundle<Values>};
}

constexpr Part kParts[] = {
    BundlePart<WtpValues>(),
    BundlePart<FARestoreValues>(),
    BundlePart<NcieValues>(),
    BundlePart<SampleSubmissionValues>(),
    BundlePart<SablexValues>(),
    BundlePart<AggrScanValues>(),
    BundlePart<PolicyTrackingValues>(),
    BundlePart<ServiceSwitchValues>(),
    BundlePart<ScanTypeValues>(),
    BundlePart<SpywareWhiteListValues>(),
    {L"VEXOR_BMPolicy", L"VEXOR_", true, ExplainVexor},
    {L"INI_CRITICAL_SECTION", L"INI_CRITICAL_SECTION", false, ExplainCritical},
    {L"INI_SCHEDULE_SECTION", L"INI_SCHEDULE_SECTION", false, ExplainCritical},
    {L"INI_COMPONENT_VERSION_SECTION", L"INI_COMPONENT_VERSION_SECTION", false, ExplainVersions},
    {L"Global Setting", L"Global Setting", false, ExplainGlobal},
};

bool BeginsWith(std::wstring_view text, std::wstring_view stem) {
    return text.size() >= stem.size() && EqualIgnoringCase(text.substr(0, stem.size()), stem);
}

// The twelve groups, or the one that is asked for.
void ExplainScanGroups(const Subject& subject, const ScanGroup* asked, AgentExplanation& all) {
    std::optional<AllScanValues> together;
    if (asked == nullptr && !subject.uid.empty()) {
        together = ReadAllScanGroups(subject.uid);
    }
    for (std::size_t i = 0; i < kScanGroupCount; ++i) {
        const ScanGroup& group = kScanGroups[i];
        if (asked != nullptr && &group != asked) {
            continue;
        }
        ScanGroupValues stored;
        if (together) {
            stored = std::move((*together)[i]);
        } else if (!GetStoredScanGroup(group, stored, subject.uid.c_str())) {
            all.unreadable.emplace_back(group.section);
            continue;
        }
        ExplainScanGroup(group, subject.uid, subject.changedBits, stored, all.lines);
    }
}

void ExplainParts(Subject& subject, const std::wstring& section, AgentExplanation& all) {
    const Part* previous = nullptr;
    for (const Part& part : kParts) {
        const bool isAsked = section.empty() || BeginsWith(section, part.stem);
        const bool isDone = section.empty() && previous != nullptr && previous->explain == part.explain;
        previous = &part;
        if (!isAsked || isDone || (subject.uid.empty() && part.ofAgents)) {
            continue;
        }
        Lines lines;
        if (!part.explain(subject, lines)) {
            all.unreadable.emplace_back(part.section);
        }
        for (Explanation& line : lines) {
            if (section.empty() || EqualIgnoringCase(line.section, section)) {
                all.lines.push_back(std::move(line));
            }
        }
    }
}

}  // namespace

const char* NameOf(SettingSource source) noexcept {
    constexpr const char* kNames[] = {"request",        "database bit", "database number", "database text",
                                      "completed text", "scan INI",     "default",         "fixed"};
    return kNames[static_cast<std::size_t>(source)];
}

std::vector<IniLine> SplitSections(std::wstring_view text) {
    std::vector<IniLine> lines;
    std::wstring section;
    while (!text.empty()) {
        const std::wstring_view line = text.substr(0, text.find(L'\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (const std::size_t equals = line.find(L'='); !line.starts_with(L'[') && equals != line.npos) {
            lines.push_back({section, std::wstring(line.substr(0, equals)), std::wstring(line.substr(equals + 1))});
        } else if (line.starts_with(L'[') && line.ends_with(L']')) {
            section = line.substr(1, line.size() - 2);
        }
    }
    return lines;
}

AgentExplanation ExplainAgent(const std::wstring& uid, const std::wstring& section) {
    AgentExplanation all;
    Subject subject{uid};
    if (!uid.empty()) {
        dbGetConfFlagW(uid.c_str(), subject.changedBits, 0);
    }
    const ScanGroup* const asked = FindScanSection(section);
    if (asked != nullptr || section.empty()) {
        ExplainScanGroups(subject, asked, all);
    }
    if (asked == nullptr) {
        ExplainParts(subject, section, all);
    }
    return all;
}

std::vector<std::wstring_view> KnownSections() {
    std::vector<std::wstring_view> sections;
    for (const ScanGroup& group : kScanGroups) {
        sections.insert(sections.end(), {group.section, group.name});
    }
    for (const Part& part : kParts) {
        sections.push_back(part.section);
    }
    return sections;
}

}  // namespace wrb
