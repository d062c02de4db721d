#include "CommandMessage.h"

#include <algorithm>
#include <charconv>

namespace wrb {
namespace {

template <typename Character>
std::vector<std::basic_string_view<Character>> Split(std::basic_string_view<Character> text,
                                                     std::basic_string_view<Character> separator) {
    std::vector<std::basic_string_view<Character>> parts;
    for (;;) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.push_back(text.substr(0, end));
        if (end == text.size()) {
            return parts;
        }
        text.remove_prefix(end + separator.size());
    }
}

// The number at the end of "counter 6".
int NumberOf(std::string_view name) {
    int number = 0;
    const std::size_t digits = name.find_last_not_of("0123456789") + 1;
    std::from_chars(name.data() + digits, name.data() + name.size(), number);
    return number;
}

}  // namespace

std::vector<std::string> FieldNames(std::string_view layout) {
    std::vector<std::string> names;
    if (layout.empty() || layout == "none" || layout == "-") {
        return names;
    }
    for (const std::string_view name : Split(layout, std::string_view(", "))) {
        const std::size_t to = name.find(" to ");
        if (to == name.npos) {
            names.emplace_back(name);
            continue;
        }
        const std::string stem(name.substr(0, name.rfind(' ', to - 1) + 1));
        for (int number = NumberOf(name.substr(0, to)); number <= NumberOf(name); ++number) {
            names.push_back(stem + std::to_string(number));
        }
    }
    return names;
}

CommandMessage ReadCommandMessage(std::wstring_view message) {
    CommandMessage parts;
    parts.fields = Split(message.substr(0, message.find(L'\0')), std::wstring_view(L"\t"));
    parts.name = parts.fields[0];
    parts.entry = FindCommand(parts.name);
    if (parts.entry != nullptr) {
        const std::size_t place = parts.entry->Answers() ? 2 : 1;
        const std::string_view before = parts.entry->Answers() ? "reply pipe, uid" : "uid";
        if (parts.entry->fields.starts_with(before) && parts.fields.size() > place) {
            parts.uid = parts.fields[place];
        }
    }
    return parts;
}

std::wstring WithReplyPipe(const CommandMessage& message, std::wstring_view replyPipe) {
    std::wstring text(message.name);
    text.append(L"\t").append(replyPipe);
    for (std::size_t i = 2; i < message.fields.size(); ++i) {
        text.append(L"\t").append(message.fields[i]);
    }
    return text;
}

}  // namespace wrb
