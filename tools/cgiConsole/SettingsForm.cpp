#include "SettingsForm.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "ScanRowText.h"
#include "SettingValue.h"

namespace wrb {
namespace {

constexpr std::wstring_view kGeneral[] = {L"Enable", L"AllowCfg", L"ScanMethod", L"ScanSpeed", L"ScanType"};
constexpr std::wstring_view kSchedule[] = {
    L"Frequency", L"Hour", L"Minute", L"AmPm", L"DayOfMonth", L"DayOfWeek", L"WeekOrdinalOfMonth", L"WeekdayOfMonth"};
constexpr std::wstring_view kFindings[] = {L"ActiveAction",
                                           L"EnablePossibleVirusCustActInActiveAct",
                                           L"PossibleVirusCustActInActiveAct",
                                           L"SystemCleanForPossibleVirus",
                                           L"EnableUniAct",
                                           L"CustAction",
                                           L"ActionType",
                                           L"BkUpIfClean",
                                           L"MoveDir",
                                           L"CleanFailedMoveDir",
                                           L"EnableAggressiveClean",
                                           L"AtseCveExploitAction"};
constexpr std::wstring_view kMessages[] = {L"DispPossibleVirusFoundAlert", L"PopVirusFoundAlert",
                                           L"PopSpywareFoundAlert"};

struct Heading {
    const char* title;
    std::span<const std::wstring_view> keys;
};
constexpr std::size_t kTargets = 2;  // every key that no other heading has
constexpr Heading kHeadings[] = {
    {"General", kGeneral},        {"Schedule", kSchedule}, {"What is scanned", {}},
    {"What is found", kFindings}, {"Messages", kMessages},
};

std::size_t HeadingOf(std::wstring_view key) {
    const auto* const found = std::ranges::find_if(kHeadings, [key](const Heading& heading) {
        return std::ranges::find(heading.keys, key) != heading.keys.end();
    });
    return found == std::end(kHeadings) ? kTargets : static_cast<std::size_t>(found - kHeadings);
}

Data Options(const SettingInfo& setting, const std::wstring& value) {
    Data options = ListData();
    for (const uint32_t number : setting.Choices()) {
        Data option;
        option["value"] = NumberData(number);
        option["selected"] = std::to_wstring(number) == value;
        options.push_back(option);
    }
    return options;
}

Data Control(const SettingInfo& setting, const std::wstring& stored, const ControlNote* note) {
    const std::wstring& value = note != nullptr ? note->typed : stored;
    Data control;
    control["key"] = TextData(setting.Key());
    control["label"] = setting.help->label;
    control["help"] = setting.help->text;
    control["default"] = setting.Shown(setting.Default());
    control["value"] = TextData(value);
    control["was"] = TextData(stored);
    control["switch"] = setting.kind == SettingKind::Switch;
    control["on"] = value == L"1";
    control["choice"] = setting.kind == SettingKind::Choice;
    control["number"] = setting.kind == SettingKind::Number;
    control["text"] = setting.kind == SettingKind::Text;
    control["least"] = NumberData(setting.help->least);
    control["most"] = NumberData(setting.help->most);
    control["unit"] = setting.help->unit;
    control["range"] = setting.Range();
    control["longest"] = NumberData(kLongestSettingText);
    control["error"] = note == nullptr ? "" : note->error;
    control["isWrong"] = note != nullptr && !note->error.empty();
    control["notice"] = note == nullptr ? "" : note->notice;
    control["isNoted"] = note != nullptr && !note->notice.empty();
    if (setting.kind == SettingKind::Choice) {
        control["options"] = Options(setting, value);
    }
    return control;
}

}  // namespace

Data FormSections(const ScanGroup& group, SettingsLevel level, const ScanGroupValues& stored,
                  const ControlNotes& notes) {
    std::vector<Data> controls(std::size(kHeadings), ListData());
    for (const SettingInfo& setting : SettingCatalog()) {
        if (setting.group == &group && setting.IsSetFor(level != SettingsLevel::Server)) {
            const auto note = notes.find(setting.Key());
            controls[HeadingOf(setting.Key())].push_back(
                Control(setting, ScanRowText(*setting.row, stored), note == notes.end() ? nullptr : &note->second));
        }
    }
    Data sections = ListData();
    for (std::size_t i = 0; i < std::size(kHeadings); ++i) {
        if (!controls[i].is_empty_list()) {
            Data section;
            section["heading"] = kHeadings[i].title;
            section["controls"] = std::move(controls[i]);
            sections.push_back(section);
        }
    }
    return sections;
}

}  // namespace wrb
