#include "Mask.h"

#include <algorithm>

#include "AgentUid.h"
#include "Bytes.h"
#include "CommandMessage.h"
#include "RecordingFile.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kMostMasks = 100'000;  // that are kept; they can be made again
constexpr std::size_t kTextDigits = 12;
constexpr std::wstring_view kHexDigits = L"0123456789abcdef";
constexpr std::wstring_view kEnds = L"\t\r\n";

bool IsNumber(std::wstring_view field) {
    constexpr std::size_t kMostDigits = 20;
    field.remove_prefix(field.starts_with(L'-') ? 1 : 0);
    return field.size() <= kMostDigits && field.find_first_not_of(L"0123456789") == field.npos;
}

// Applies `mask` to what is between TABs and line ends.
template <typename MaskOne>
std::wstring MaskEach(std::wstring_view text, MaskOne mask) {
    std::wstring masked;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(kEnds), text.size());
        masked += mask(text.substr(0, end));
        masked += text.substr(end, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return masked;
}

void Append(std::string& to, const std::wstring& text) {
    to.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

}  // namespace

Mask::Mask() {
    FillRandom(m_key);
}

std::string Mask::Record(const RecordView& record) {
    const std::wstring text = WideTextOf(record.message);
    const std::wstring message = Message(text);
    const std::wstring answer = WideTextOf(record.answer);
    const bool isIni = answer.starts_with(L'[') && !text.starts_with(L"CMDHL_ECHO\t");
    const std::wstring masked = Answer(answer, isIni);
    RecordedCommand command = record.command;
    command.messageBytes = static_cast<uint32_t>(message.size() * sizeof(wchar_t));
    command.answerBytes = static_cast<uint32_t>(masked.size() * sizeof(wchar_t));
    command.head.bytes = static_cast<uint32_t>(sizeof command + command.messageBytes + command.answerBytes);
    std::string bytes(reinterpret_cast<const char*>(&command), sizeof command);
    Append(bytes, message);
    Append(bytes, masked);
    return bytes;
}

std::wstring Mask::Message(std::wstring_view message) {
    const CommandMessage parts = ReadCommandMessage(message);
    std::wstring text = parts.entry != nullptr ? std::wstring(parts.name) : Field(parts.name);
    for (std::size_t i = 1; i < parts.fields.size(); ++i) {
        text += L"\t" + MaskEach(parts.fields[i], [this](std::wstring_view field) { return Field(field); });
    }
    return text;
}

std::wstring Mask::Answer(std::wstring_view answer, bool isIni) {
    return MaskEach(answer, [&](std::wstring_view part) { return isIni ? Line(part) : Field(part); });
}

std::wstring Mask::Line(std::wstring_view line) {
    if (line.starts_with(L'[') && line.ends_with(L']')) {
        return std::wstring(line);
    }
    const std::size_t value = std::min(line.find(L'='), line.size());
    return value == line.size() ? Field(line) : std::wstring(line.substr(0, value + 1)) + Field(line.substr(value + 1));
}

std::wstring Mask::Field(std::wstring_view field) {
    if (IsNumber(field)) {  // an empty one is
        return std::wstring(field);
    }
    const bool isUid = HasUidForm(field);
    const std::wstring text = isUid ? FoldedUid(field) : std::wstring(field);
    if (const auto known = m_masks.find(text); known != m_masks.end()) {
        return known->second;
    }
    const std::wstring digits = Utf8ToWide(HexDigits(KeyedHash(m_key, WideToUtf8(text))));
    std::wstring mask = L"~" + digits.substr(0, kTextDigits);
    if (isUid) {
        mask = digits.substr(0, kUidCharacters);
        for (const std::size_t dash : {8, 13, 18, 23}) {
            mask[dash] = L'-';
        }
    }
    if (m_masks.size() >= kMostMasks) {
        m_masks.clear();
    }
    return m_masks.try_emplace(text, mask).first->second;
}

bool IsTextMask(std::wstring_view field) {
    return field.size() == kTextDigits + 1 && field[0] == L'~' && field.find_first_not_of(kHexDigits, 1) == field.npos;
}

}  // namespace wrb
