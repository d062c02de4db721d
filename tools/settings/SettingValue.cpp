#include "SettingValue.h"

#include <algorithm>
#include <optional>

#include "ScanCfgIni.h"
#include "Text.h"

namespace wrb {
namespace {

std::optional<int32_t> NumberOf(std::wstring_view text) {
    const std::wstring_view digits = text.substr(text.starts_with(L'-') ? 1 : 0);
    const bool good = !digits.empty() && digits.size() < 10 && digits.find_first_not_of(L"0123456789") == digits.npos;
    return good ? std::optional(ParseInt32(text)) : std::nullopt;
}

std::string CheckText(std::wstring_view text, bool agent) {
    const auto isControl = [](wchar_t character) { return character < L' ' || character == 0x7F; };
    if (text.size() > kLongestSettingText) {
        return "is longer than " + std::to_string(kLongestSettingText) + " characters";
    }
    if (std::ranges::any_of(text, isControl)) {
        return "has a control character";
    }
    return agent || SurvivesAnIniFile(text)
               ? ""
               : "does not survive an INI file: it has blanks or quotes around it, or characters that the system's "
                 "code page lacks";
}

void SetChoice(const ScanChoice& choice, uint32_t number, uint32_t& flags) {
    for (const ScanChoice::Arm& arm : choice.stored) {
        flags &= ~arm.bits;
    }
    flags |= choice.BitsOf(number);
}

}  // namespace

std::string SetSetting(const SettingInfo& setting, std::wstring_view text, bool agent, ScanGroupValues& values) {
    const ScanRow& row = *setting.row;
    if (!setting.IsSetFor(agent)) {
        return setting.kind == SettingKind::Fixed ? "cannot be set" : "is MoveDir for an agent; set that";
    }
    if (setting.kind == SettingKind::Text) {
        std::string wrong = CheckText(text, agent);
        if (wrong.empty()) {
            values.*row.text = text;
        }
        return wrong;
    }
    const std::optional<int32_t> number = NumberOf(text);
    const std::vector<uint32_t> choices = setting.Choices();
    const bool good = number && (setting.kind == SettingKind::Number
                                     ? *number >= setting.help->least && *number <= setting.help->most
                                     : std::ranges::find(choices, static_cast<uint32_t>(*number)) != choices.end());
    if (!good) {
        return "must be " + setting.Range();
    }
    if (setting.kind == SettingKind::Number) {
        values.*row.number = static_cast<uint32_t>(*number);
    } else if (setting.kind == SettingKind::Choice) {
        SetChoice(*row.choice, static_cast<uint32_t>(*number), values.flags);
    } else {
        values.flags = *number != 0 ? values.flags | row.bits : values.flags & ~row.bits;
    }
    return {};
}

}  // namespace wrb
