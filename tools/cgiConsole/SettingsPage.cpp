#include <windows.h>

#include <optional>
#include <utility>
#include <vector>

#include "AllAgents.h"
#include "Audit.h"
#include "Listing.h"
#include "Pages.h"
#include "ScanChanges.h"
#include "ScanRowText.h"
#include "SettingValue.h"
#include "SettingsForm.h"
#include "SettingsMerge.h"
#include "SettingsSubject.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {
namespace {

// The form's first values; of all agents those of the server. False when the agent is unknown or has no settings.
bool ReadStored(const SettingsSubject& subject, ScanGroupValues& values) {
    return GetStoredScanGroup(*subject.group, values, subject.uid.c_str());
}

View FormView(const SettingsSubject& subject, const ScanGroupValues& stored, const ControlNotes& notes = {}) {
    View view;
    AddSettingsFrame(view.data, subject);
    view.data["form"] = true;
    view.data["sections"] = FormSections(*subject.group, subject.level, stored, notes);
    return view;
}

View NoSettings(const SettingsSubject& subject) {
    View view = Refusal("404 Not Found",
                        L"The store has no such agent, or the agent has no scan settings, or the database "
                        L"server does not answer.");
    AddSettingsFrame(view.data, subject);
    return view;
}

View FormAgain(const SettingsSubject& subject, const MergedForm& merged, const char* status, std::wstring note) {
    View view = FormView(subject, merged.change.before, merged.notes);
    view.status = status;
    view.note = std::move(note);
    view.kind = NoteKind::Bad;
    return view;
}

// The form again when the request cannot be stored as it is.
std::optional<View> Objection(const SettingsSubject& subject, const MergedForm& merged) {
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

View StoredView(const SettingsSubject& subject, std::size_t count) {
    View view;
    view.location = AddressOf(subject, *subject.group) + L"&stored=" + std::to_wstring(count);
    return view;
}

View StoreOne(const Request& request, const SettingsSubject& subject, const FieldSource& given) {
    ScanGroupValues stored;
    if (!ReadStored(subject, stored)) {
        return NoSettings(subject);
    }
    const MergedForm merged = MergeForm(request, subject, stored, given);
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
    AddAudit(request, AuditTarget(subject), entries);
    return StoredView(subject, entries.size());
}

// ---- all agents ----

// What would be written, beside what agents have.
View PreviewView(const SettingsSubject& subject, const MergedForm& merged, const AllAgentsValues& all) {
    View view;
    AddSettingsFrame(view.data, subject);
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

View WriteAll(const Request& request, const SettingsSubject& subject, const GroupChange& change,
              const AllAgentsValues& all) {
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
    AddAudit(request, AuditTarget(subject), entries);
    return StoredView(subject, entries.size());
}

// First the preview, then the write that it offers.
View ChangeAll(const Request& request, const SettingsSubject& subject, bool isConfirmed) {
    ScanGroupValues stored;
    ReadStored(subject, stored);
    const MergedForm merged =
        MergeForm(request, subject, stored, [&](const std::wstring& key) { return request.Find(key.c_str()); });
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
View StoreFile(const Request& request, const SettingsSubject& subject) {
    constexpr std::wstring_view kAbsent = L"\x7F";
    const std::wstring path = request.UploadPath(L"defaults");
    ScanGroupValues stored;
    ReadStored(subject, stored);
    if (path.empty() || subject.level != SettingsLevel::Server) {
        return FormAgain(subject, UnchangedForm(subject, stored), "400 Bad Request", L"No file came along.");
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
               : FormAgain(subject, UnchangedForm(subject, stored), "400 Bad Request",
                           L"The file has no setting in its section [" + std::wstring(subject.group->section) + L"].");
}

}  // namespace

View ShowSettings(const Request& request) {
    const std::optional<SettingsSubject> subject = FindSettingsSubject(request);
    if (!subject) {
        return Refusal("404 Not Found", L"There is no such group of settings.");
    }
    View view;
    ScanGroupValues stored;
    if (subject->level == SettingsLevel::Agent && subject->uid.empty()) {
        AddSettingsFrame(view.data, *subject);
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
    const std::optional<SettingsSubject> subject = FindSettingsSubject(request);
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
