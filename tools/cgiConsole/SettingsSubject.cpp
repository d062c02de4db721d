#include "SettingsSubject.h"

#include <algorithm>
#include <iterator>

#include "Listing.h"
#include "Text.h"

namespace wrb {
namespace {

struct LevelRow {
    std::wstring_view name;  // in the address
    const char* title;
};
constexpr LevelRow kLevels[] = {{L"server", "Server-wide defaults"}, {L"agent", "One agent"}, {L"all", "All agents"}};

constexpr const char* kTypeTitles[] = {"Manual scan", "Real-time scan", "Prescheduled scan", "Scan now"};
constexpr const char* kKindTitles[] = {"Scan", "Spyware", "Exclusions"};

Data LevelMenu(const SettingsSubject& subject) {
    Data menu = ListData();
    for (const LevelRow& row : kLevels) {
        const bool isCurrent = &row == &kLevels[static_cast<std::size_t>(subject.level)];
        Data entry;
        entry["title"] = row.title;
        entry["href"] =
            isCurrent ? WideToUtf8(AddressOf(subject, *subject.group))
                      : "?page=settings&level=" + WideToUtf8(row.name) + "&group=" + WideToUtf8(subject.group->name);
        entry["current"] = isCurrent;
        menu.push_back(entry);
    }
    return menu;
}

// A line a scan type, an entry a group.
Data GroupMenu(const SettingsSubject& subject) {
    Data lines = ListData();
    for (std::size_t type = 0; type < std::size(kTypeTitles); ++type) {
        Data entries = ListData();
        for (std::size_t kind = 0; kind < std::size(kKindTitles); ++kind) {
            const ScanGroup& group = kScanGroups[type * std::size(kKindTitles) + kind];
            Data entry;
            entry["title"] = kKindTitles[kind];
            entry["href"] = TextData(AddressOf(subject, group));
            entry["current"] = &group == subject.group;
            entries.push_back(entry);
        }
        Data line;
        line["title"] = kTypeTitles[type];
        line["entries"] = std::move(entries);
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

std::optional<SettingsSubject> FindSettingsSubject(const Request& request) {
    const std::wstring level = request.Has(L"level") ? request.Text(L"level") : std::wstring(kLevels[0].name);
    const std::wstring name = request.Text(L"group");
    const auto* const row = std::ranges::find(kLevels, level, &LevelRow::name);
    const auto* const group =
        name.empty() ? kScanGroups.data() : std::ranges::find(kScanGroups, name, &ScanGroup::name);
    if (row == std::end(kLevels) || group == kScanGroups.end()) {
        return std::nullopt;
    }
    SettingsSubject subject{static_cast<SettingsLevel>(row - kLevels), group, {}};
    if (subject.level == SettingsLevel::Agent) {
        subject.uid = request.Text(L"uid");
    }
    return subject;
}

std::wstring AddressOf(const SettingsSubject& subject, const ScanGroup& group) {
    std::wstring address =
        L"?page=settings&level=" + std::wstring(kLevels[static_cast<std::size_t>(subject.level)].name);
    address += subject.uid.empty() ? L"" : L"&uid=" + Utf8ToWide(UrlText(subject.uid));
    return address + L"&group=" + std::wstring(group.name);
}

std::wstring AuditTarget(const SettingsSubject& subject) {
    return subject.level == SettingsLevel::Agent ? subject.uid
           : subject.level == SettingsLevel::All ? L"all agents"
                                                 : L"server-wide defaults";
}

void AddSettingsFrame(Data& data, const SettingsSubject& subject) {
    data["levels"] = LevelMenu(subject);
    data["lines"] = GroupMenu(subject);
    data["level"] = TextData(kLevels[static_cast<std::size_t>(subject.level)].name);
    data["group"] = TextData(subject.group->name);
    data["uid"] = TextData(subject.uid);
    data["uidUrl"] = UrlText(subject.uid);
    data["title"] = std::string(kTypeTitles[static_cast<std::size_t>(subject.group->type)]) + ": " +
                    kKindTitles[static_cast<std::size_t>(subject.group->kind)];
    data["section"] = TextData(subject.group->section);
    data["isServer"] = subject.level == SettingsLevel::Server;
    data["isAgent"] = subject.level == SettingsLevel::Agent;
    data["isAll"] = subject.level == SettingsLevel::All;
    data["needsAgent"] = subject.level == SettingsLevel::Agent && subject.uid.empty();
    data["form"] = false;
    data["preview"] = false;
}

}  // namespace wrb
