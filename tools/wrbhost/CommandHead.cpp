#include "CommandHead.h"

#include <algorithm>
#include <cstring>

namespace wrb {
namespace {

constexpr std::size_t kHeadCharacters = 512;  // more than the longest name and the longest reply pipe

// Takes the first field off `text`. Nothing comes of a field that reaches the end of what is looked at.
std::wstring_view TakeField(std::wstring_view& text) {
    const std::size_t end = std::min(text.find_first_of(std::wstring_view(L"\t\0", 2)), text.size());
    const std::wstring_view field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return field;
}

}  // namespace

CommandHead ReadCommandHead(std::string_view message) {
    wchar_t characters[kHeadCharacters];
    const std::size_t count = std::min(message.size() / sizeof(wchar_t), kHeadCharacters);
    std::memcpy(characters, message.data(), count * sizeof(wchar_t));
    std::wstring_view text(characters, count);
    const CommandEntry* const entry = FindCommand(TakeField(text));
    if (entry == nullptr) {
        return {};
    }
    CommandHead head{entry->lane, entry->failure, {}};
    if (entry->failure != FailureAnswer::None) {
        head.replyPipe = TakeField(text);
    }
    return head;
}

}  // namespace wrb
