#include <algorithm>

#include "Bytes.h"
#include "CommandMessage.h"
#include "DbCommands.h"
#include "Formats.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kCharacter = sizeof(wchar_t);

// The texts that have no table of commands. The last field takes the TABs that are left.
constexpr struct {
    std::wstring_view command;
    const char* kind;
    std::string_view fields;
} kTexts[] = {
    {L"LOG_WRITE", "line for the log service", "time, process id, thread id, level, source file, line, text"},
    {L"CMDHQM_EVENT_RTS_STATUS_CHANGE", "event for the central-management agent", "status of the real-time scan"},
    {L"CMDHQM_SEND_FIREWALL_LOG", "event for the central-management agent",
     "uid, calendar time, local address, remote address, protocol, type, sub-type, port, direction, log type, "
     "process path, process information"},
};

struct Layout {
    const char* kind;
    std::vector<std::string> names;  // of the fields after the command
    bool lastTakesRest = false;
};

Layout LayoutOf(const std::wstring& command) {
    const CommandMessage message = ReadCommandMessage(command);
    if (message.entry != nullptr) {
        return {"command", FieldNames(message.entry->fields)};
    }
    if (const auto database = FindDbCommand(command)) {
        Layout layout{"text command for the database server", {"reply id"}};
        std::ranges::move(FieldNames(DescribeDbCommand(*database).requestFields), std::back_inserter(layout.names));
        return layout;
    }
    for (const auto& text : kTexts) {
        if (text.command == command) {
            return {text.kind, FieldNames(text.fields), true};
        }
    }
    return {nullptr, {}};
}

void TakeFields(FieldCursor& cursor, std::wstring_view text, const std::vector<std::string>& names,
                const std::string& otherName, wchar_t separator, bool lastTakesRest) {
    text = text.substr(0, text.find(L'\0'));
    for (std::size_t i = 0;; ++i) {
        const bool takesRest = lastTakesRest && i + 1 == names.size();
        const std::size_t end = takesRest ? text.size() : std::min(text.find(separator), text.size());
        cursor.Take(i < names.size() ? names[i] : otherName + std::to_string(i + 1), end * kCharacter,
                    std::wstring(text.substr(0, end)));
        if (end == text.size()) {
            return;
        }
        cursor.Skip(kCharacter);
        text.remove_prefix(end + 1);
    }
}

}  // namespace

bool IsText(std::span<const uint8_t> bytes) {
    const std::wstring text = WideTextOf(bytes);
    const auto isOther = [](wchar_t c) {
        return (c < L' ' && c != L'\t' && c != L'\r' && c != L'\n') || c == 0x7F || c >= 0xFFFE;
    };
    const auto end = std::ranges::find_if(text, isOther);
    return !text.empty() && (end == text.end() || (*end == L'\0' && end + 1 == text.end())) &&
           Utf8ToWide(WideToUtf8(text)) == text;
}

std::string DecodeText(FieldCursor& cursor) {
    const std::wstring text = WideTextOf(cursor.Rest());
    const Layout layout = LayoutOf(text.substr(0, text.find_first_of(std::wstring_view(L"\t\0", 2))));
    std::string kind = "text";
    if (layout.kind != nullptr) {
        kind = layout.kind;
        std::vector<std::string> names = {"command"};
        names.insert(names.end(), layout.names.begin(), layout.names.end());
        TakeFields(cursor, text, names, "field ", L'\t', layout.lastTakesRest);
    } else if (text.find(L'\n') != text.npos) {
        TakeFields(cursor, text, {}, "line ", L'\n', false);
    } else {
        TakeFields(cursor, text, {}, "field ", L'\t', false);
    }
    if (BeginsWith(cursor.Rest(), {0, 0})) {
        cursor.Take("NUL", kCharacter, L"");
    }
    return kind;
}

}  // namespace wrb
