#include "SectionView.h"

#include <algorithm>
#include <optional>

#include "AgentSections.h"
#include "Listing.h"
#include "ScanChanges.h"
#include "ScanExplanation.h"
#include "ScanRowText.h"
#include "cmdhm_ScanCfg.h"

namespace wrb {
namespace {

constexpr std::wstring_view kEverySection = L"*";

// The scan setting that a line shows; null for other lines.
const SettingInfo* SettingOf(const Explanation& line) {
    const ScanGroup* const group = FindScanSection(line.section);
    return group == nullptr ? nullptr : FindSetting(*group, line.key);
}

Data LineData(const Explanation& line) {
    const SettingInfo* const setting = SettingOf(line);
    Data row;
    row["key"] = TextData(line.key);
    row["value"] = TextData(line.value);
    row["meaning"] = setting == nullptr ? "" : setting->help->label;
    row["kind"] = setting == nullptr ? "" : NameOf(setting->kind);
    row["source"] = NameOf(line.source);
    row["from"] = TextData(line.from);
    row["hasWord"] = line.word.has_value();
    row["word"] = TextData(line.word ? FormatWide(L"0x%08X & 0x%08X", *line.word, line.mask) : L"");
    return row;
}

// Consecutive lines of a section, under its name.
Data SectionsData(const std::vector<Explanation>& lines) {
    Data sections = ListData();
    for (auto first = lines.begin(); first != lines.end();) {
        const auto last =
            std::find_if(first, lines.end(), [&](const Explanation& line) { return line.section != first->section; });
        Data rows = ListData();
        std::for_each(first, last, [&](const Explanation& line) { rows.push_back(LineData(line)); });
        Data section;
        section["name"] = TextData(first->section);
        section["changed"] = first->isChanged;
        section["rows"] = std::move(rows);
        sections.push_back(section);
        first = last;
    }
    return sections;
}

AllScanValues ReadDefaults() {
    AllScanValues values;
    for (std::size_t i = 0; i < kScanGroupCount; ++i) {
        GetStoredScanGroup(kScanGroups[i], values[i], L"");
    }
    return values;
}

Data Difference(const SettingChange& change) {
    Data row;
    row["section"] = TextData(change.setting->group->section);
    row["label"] = change.setting->help->label;
    row["key"] = TextData(change.setting->Key());
    row["other"] = change.setting->Shown(change.before);
    row["agent"] = change.setting->Shown(change.after);
    return row;
}

}  // namespace

void AddDifferences(const std::wstring& uid, const std::wstring& with, Data& data) {
    Data rows = ListData();
    const std::optional<AllScanValues> agent = ReadAllScanGroups(uid);
    const std::optional<AllScanValues> other = with.empty() ? ReadDefaults() : ReadAllScanGroups(with);
    for (std::size_t i = 0; agent && other && i < kScanGroupCount; ++i) {
        for (const SettingChange& change : CompareGroups(kScanGroups[i], (*other)[i], (*agent)[i])) {
            if (change.setting->IsSetFor(true)) {
                rows.push_back(Difference(change));
            }
        }
    }
    data["with"] = TextData(with);
    data["isWithAgent"] = !with.empty();
    data["hasOther"] = other.has_value();
    data["hasSettings"] = agent.has_value();
    data["hasDifferences"] = !rows.is_empty_list();
    data["differences"] = std::move(rows);
}

void AddSectionLines(const std::wstring& uid, const std::wstring& section, Data& data) {
    Data menu = ListData();
    const std::string base = "?page=agent&uid=" + UrlText(uid) + "&section=";
    const auto add = [&](std::wstring_view name, const char* title) {
        Data entry;
        entry["title"] = title == nullptr ? TextData(name) : Data(title);
        entry["href"] = base + UrlText(name) + "#lines";
        entry["current"] = name == section;
        menu.push_back(entry);
    };
    add(kEverySection, "All sections");
    for (const std::wstring_view name : KnownSections()) {
        const ScanGroup* const group = FindScanSection(name);
        if (group == nullptr || group->section == name) {
            add(name, nullptr);
        }
    }
    data["sectionMenu"] = std::move(menu);
    data["isAsked"] = !section.empty();
    if (!section.empty()) {
        const AgentExplanation all = ExplainAgent(uid, section == kEverySection ? L"" : section);
        data["lines"] = SectionsData(all.lines);
        data["anyLines"] = !all.lines.empty();
        data["unread"] =
            all.unreadable.empty() ? "The agent has nothing in this section."
            : section == L"Web Threat Protection"
                ? "This cannot be read: the server has no valid protection key. The agent gets an empty answer."
                : "This cannot be read: the agent has no settings of its own here. It gets an empty answer.";
    }
}

}  // namespace wrb
