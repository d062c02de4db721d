#include "SettingsMerge.h"

#include <utility>

#include "ScanRowText.h"
#include "SettingValue.h"
#include "Text.h"

namespace wrb {

MergedForm UnchangedForm(const SettingsSubject& subject, const ScanGroupValues& stored) {
    return {.change = {.group = subject.group, .before = stored, .after = stored, .changes = {}}, .notes = {}};
}

MergedForm MergeForm(const Request& request, const SettingsSubject& subject, const ScanGroupValues& stored,
                     const FieldSource& given) {
    MergedForm merged = UnchangedForm(subject, stored);
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

std::wstring WrongText(const MergedForm& merged) {
    std::wstring keys;
    for (const auto& [key, note] : merged.notes) {
        if (!note.error.empty()) {
            keys += (keys.empty() ? L"" : L", ") + std::wstring(key);
        }
    }
    return L"Nothing was stored. Look at: " + keys + L".";
}

}  // namespace wrb
