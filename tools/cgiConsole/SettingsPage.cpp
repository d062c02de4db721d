#include <windows.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>

#include "AllAgents.h"
#include "Audit.h"
#include "Listing.h"
#include "Pages.h"
#include "ScanChanges.h"
#include "ScanRowText.h"
#include "SettingValue.h"
#include "SettingsForm.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {
namespace {

// What a request is about.
struct Subject {
    SettingsLevel level;
    const ScanGroup* group;
    std::wstring uid;  // of SettingsLevel::Agent
};

struct LevelRow {
    std::wstring_view name;  // in the address
    const char* title;
};
constexpr LevelRow kLevels[] = {{L"server", "Server-wide defaults"}, {L"agent", "One agent"}, {L"all", "All agents"}};

constexpr const char* kTypeTitles[] = {"Manual scan", "Real-time scan", "Prescheduled scan", "Scan now"};
constexpr const char* kKindTitles[] = {"Scan", "Spyware", "Exclusions"};

// Nothing for a level or a group that does not exist.
std::optional<Subject> SubjectOf(const Request& request) {
    const std::wstring level = request.Has(L"level") ? request.Text(L"level") : std::wstring(kLevels[0].name);
    const std::wstring name = request.Text(L"group");
    const auto* const row = std::ranges::find(kLevels, level, &LevelRow::name);
    const auto* const group =
        name.empty() ? kScanGroups.data() : std::ranges::find(kScanGroups, name, &ScanGroup::name);
    if (row == std::end(kLevels) || group == kScanGroups.end()) {
        return std::nullopt;
    }
    Subject subject{static_cast<SettingsLevel>(row - kLevels), group, {}};
    if (subject.level == SettingsLevel::Agent) {
        subject.uid = request.Text(L"uid");
    }
    return subject;
}

std::wstring AddressOf(const Subject& subject, const ScanGroup& group) {
    std::wstring address =
        L"?page=settings&level=" + std::wstring(kLevels[static_cast<std::size_t>(subject.level)].name);
    address += subject.uid.empty() ? L"" : L"&uid=" + Utf8ToWide(UrlText(subject.uid));
    return address + L"&group=" + std::wstring(group.name);
}

Data LevelMenu(const Subject& subject) {
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
Data GroupMenu(const Subject& subject) {
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

void AddFrame(Data& data, const Subject& subject) {
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

// The form's first values; of all agents those of the server. False when the agent is unknown or has no settings.
bool ReadStored(const Subject& subject, ScanGroupValues& values) {
    return GetStoredScanGroup(*subject.group, values, subject.uid.c_str());
}

View FormView(const Subject& subject, const ScanGroupValues& stored, const ControlNotes& notes = {}) {
    View view;
    AddFrame(view.data, subject);
    view.data["form"] = true;
    view.data["sections"] = FormSections(*subject.group, subject.level, stored, notes);
    return view;
}

View NoSettings(const Subject& subject) {
    View view = Refusal("404 Not Found",
                        L"The store has no such agent, or the agent has no scan settings, or the database "
                        L"server does not answer.");
    AddFrame(view.data, subject);
    return view;
}

// The text that a request gives for a key; null when it gives none, which leaves the setting as it is.
using Source = std::function<const wchar_t*(const std::wstring& key)>;

// A request's values put over the stored ones.
struct Merged {
    GroupChange change;
    ControlNotes notes;  // of every key that was given
    bool isWrong = false;
    std::size_t changedMeanwhile = 0;
};

Merged Unchanged(const Subject& subject, const ScanGroupValues& stored) {
    return {.change = {.group = subject.group, .before = stored, .after = stored, .changes = {}}, .notes = {}};
}

// A key that the user has not touched keeps the stored value, also when somebody else has changed it since.
Merged Merge(const Request& request, const Subject& subject, const ScanGroupValues& stored, const Source& given) {
    Merged merged = Unchanged(subject, stored);
    for (const SettingInfo& setting : SettingCatalog()) {
        const std::wstring key(setting.Key());
        const wchar_t* const typed = setting.group == subject.group ? given(key) : nullptr;
        if (typed == nullptr || setting.kind == SettingKind::Fixed) {
            continue;
        }
        const std::wstring now = ScanRowText(*setting.row, stored);
        const wchar_t* const was = request.Find((L"was." + key).c_str());
        ControlNote note{
            .typed = was != nullptr && typed == std::wstring_view(was) ? now : typed, .error = {}, .notice = {}};
        if (note.typed != now) {  // the stored value is always accepted
            note.error = SetSetting(setting, note.typed, subject.level != SettingsLevel::Server, merged.change.after);
        }
        if (was != nullptr && was != now) {
            note.notice = "Changed meanwhile: it was \"" + WideToUtf8(was) + "\" when you opened the page, and is \"" +
                          WideToUtf8(now) + "\" now.";
            ++merged.changedMeanwhile;
        }
        merged.isWrong = merged.isWrong || !note.error.empty();
        merged.notes[setting.Key()] = std::move(note);
    }
    if (subject.level != SettingsLevel::Server) {
        merged.change.after.cleanFailedMoveDir = merged.change.after.moveDir;
    }
    merged.change.changes = CompareGroups(*subject.group, merged.change.before, merged.change.after);
    return merged;
}

View FormAgain(const Subject& subject, const Merged& merged, const char* status, std::wstring note) {
    View view = FormView(subject, merged.change.before, merged.notes);
    view.status = status;
    view.note = std::move(note);
    view.kind = NoteKind::Bad;
    return view;
}

std::wstring WrongText(const Merged& merged) {
    std::wstring keys;
    for (const auto& [key, note] : merged.notes) {
        if (!note.error.empty()) {
            keys += (keys.empty() ? L"" : L", ") + std::wstring(key);
        }
    }
    return L"Nothing was stored. Look at: " + keys + L".";
}

// The form again when the request cannot be stored as it is.
std::optional<View> Objection(const Subject& subject, const Merged& merged) {
    if (merged.isWrong) {
        return FormAgain(subject, merged, "400 Bad Request", WrongText(merged));
    }
    if (merged.changedMeanwhile != 0) {
        return FormAgain(subject, merged, "409 Conflict",
                         L"Somebody else has changed these settings since you opened the page. Nothing was stored. The "
                         L"changes are named at their controls; send the form again if yours still hold.");
    }
    return std::nullopt;
}

std::wstring TargetOf(const Subject& subject) {
    return subject.level == SettingsLevel::Agent ? subject.uid
           : subject.level == SettingsLevel::All ? L"all agents"
                                                 : L"server-wide defaults";
}

View StoredView(const Subject& subject, std::size_t count) {
    View view;
    view.location = AddressOf(subject, *subject.group) + L"&stored=" + std::to_wstring(count);
    return view;
}

View StoreOne(const Request& request, const Subject& subject, const Source& given) {
    ScanGroupValues stored;
    if (!ReadStored(subject, stored)) {
        return NoSettings(subject);
    }
    const Merged merged = Merge(request, subject, stored, given);
    if (std::optional<View> objection = Objection(subject, merged)) {
        return std::move(*objection);
    }
    if (!merged.change.changes.empty() && !StoreChange(merged.change, subject.uid)) {
        return FormAgain(subject, merged, "500 Internal Server Error",
                         subject.level == SettingsLevel::Server ? L"wrbscan.ini could not be written."
                                                                : L"The database server did not take the change.");
    }
    std::vector<AuditEntry> entries;
    for (const SettingChange& change : merged.change.changes) {
        entries.push_back({change.setting->Name(), change.before, change.after});
    }
    AddAudit(request, TargetOf(subject), entries);
    return StoredView(subject, entries.size());
}

// ---- all agents ----

// What would be written, beside what agents have.
View PreviewView(const Subject& subject, const Merged& merged, const AllAgentsValues& all) {
    View view;
    AddFrame(view.data, subject);
    Data rows = ListData();
    for (const AllAgentsValues::Setting& now : all.settings) {
        const std::wstring after = ScanRowText(*now.setting->row, merged.change.after);
        const bool isSame = now.counts.empty() || (now.counts.size() == 1 && now.counts.front().value == after);
        Data row;
        row["label"] = now.setting->help->label;
        row["key"] = TextData(now.setting->Key());
        row["before"] = CountsText(now);
        row["after"] = now.setting->Shown(after);
        row["value"] = TextData(after);
        row["changes"] = !isSame;
        rows.push_back(row);
    }
    view.data["preview"] = true;
    view.data["rows"] = std::move(rows);
    view.data["agents"] = NumberData(all.agents);
    return view;
}

// The option bits of every setting that is written. The update commands of agents leave some of them alone.
uint32_t BitsOf(const AllAgentsValues& all) {
    uint32_t bits = 0;
    for (const AllAgentsValues::Setting& each : all.settings) {
        const ScanRow& row = *each.setting->row;
        bits |= row.bits;
        for (std::size_t i = 0; row.choice != nullptr && i < row.choice->stored.size(); ++i) {
            bits |= row.choice->stored[i].bits;
        }
    }
    return bits;
}

View WriteAll(const Request& request, const Subject& subject, const GroupChange& change, const AllAgentsValues& all) {
    const ScanWrite update{.value = change.after.flags, .mask = BitsOf(all)};
    if (!SetScanGroupInDb(*subject.group, kEveryAgent, update, change.after)) {
        return FormAgain(subject, {.change = change, .notes = {}}, "500 Internal Server Error",
                         L"The database server did not take the change.");
    }
    std::vector<AuditEntry> entries;
    for (const AllAgentsValues::Setting& now : all.settings) {
        const std::wstring after = ScanRowText(*now.setting->row, change.after);
        if (now.counts.size() != 1 || now.counts.front().value != after) {
            entries.push_back({now.setting->Name(), Utf8ToWide(CountsText(now)), after});
        }
    }
    AddAudit(request, TargetOf(subject), entries);
    return StoredView(subject, entries.size());
}

// First the preview, then the write that it offers.
View ChangeAll(const Request& request, const Subject& subject, bool isConfirmed) {
    ScanGroupValues stored;
    ReadStored(subject, stored);
    const Merged merged =
        Merge(request, subject, stored, [&](const std::wstring& key) { return request.Find(key.c_str()); });
    if (merged.isWrong) {
        return FormAgain(subject, merged, "400 Bad Request", WrongText(merged));
    }
    const AllAgentsValues all = ReadAllAgents(*subject.group);
    if (!all.isAnswered) {
        return FormAgain(subject, merged, "503 Service Unavailable", L"The database server does not answer.");
    }
    return isConfirmed ? WriteAll(request, subject, merged.change, all) : PreviewView(subject, merged, all);
}

// ---- defaults from a file ----

// The file is an INI file with the group's section. A key that it lacks, and one with the default below, is not given.
View StoreFile(const Request& request, const Subject& subject) {
    constexpr std::wstring_view kAbsent = L"\x7F";
    const std::wstring path = request.UploadPath(L"defaults");
    ScanGroupValues stored;
    ReadStored(subject, stored);
    if (path.empty() || subject.level != SettingsLevel::Server) {
        return FormAgain(subject, Unchanged(subject, stored), "400 Bad Request", L"No file came along.");
    }
    std::vector<wchar_t> text(kLongestSettingText + 3);  // a truncated text still exceeds the longest valid text
    bool found = false;
    View view = StoreOne(request, subject, [&](const std::wstring& key) -> const wchar_t* {
        GetPrivateProfileStringW(subject.group->section.data(), key.c_str(), kAbsent.data(), text.data(),
                                 static_cast<DWORD>(text.size()), path.c_str());
        found = found || text.data() != kAbsent;
        return text.data() != kAbsent ? text.data() : nullptr;
    });
    return found
               ? std::move(view)
               : FormAgain(subject, Unchanged(subject, stored), "400 Bad Request",
                           L"The file has no setting in its section [" + std::wstring(subject.group->section) + L"].");
}

}  // namespace

View ShowSettings(const Request& request) {
    const std::optional<Subject> subject = SubjectOf(request);
    if (!subject) {
        return Refusal("404 Not Found", L"There is no such group of settings.");
    }
    View view;
    ScanGroupValues stored;
    if (subject->level == SettingsLevel::Agent && subject->uid.empty()) {
        AddFrame(view.data, *subject);
    } else if (ReadStored(*subject, stored)) {
        view = FormView(*subject, stored);
    } else {
        return NoSettings(*subject);
    }
    if (request.Has(L"stored")) {
        const int count = request.Number(L"stored");
        view.note = count == 0   ? L"Nothing to change."
                    : count == 1 ? L"1 setting stored."
                                 : std::to_wstring(count) + L" settings stored.";
    }
    return view;
}

View ChangeSettings(const Request& request) {
    const std::optional<Subject> subject = SubjectOf(request);
    const std::wstring action = request.Text(L"action");
    const bool needsAgent = subject && subject->level == SettingsLevel::Agent && subject->uid.empty();
    if (!subject || needsAgent) {
        return Refusal("400 Bad Request", L"There is no such group of settings, or no agent is named.");
    }
    const bool isForAll = subject->level == SettingsLevel::All;
    if (isForAll && (action == L"preview" || action == L"store")) {
        return ChangeAll(request, *subject, action == L"store");
    }
    if (action == L"store") {
        return StoreOne(request, *subject, [&](const std::wstring& key) { return request.Find(key.c_str()); });
    }
    if (action == L"upload") {
        return StoreFile(request, *subject);
    }
    return Refusal("400 Bad Request", L"There is no such action.");
}

}  // namespace wrb
