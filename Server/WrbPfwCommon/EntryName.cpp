#include "EntryName.h"

#include <algorithm>

#include "IgnoringCase.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kForbidden = L"<>:\"|?*";
constexpr std::wstring_view kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CLOCK$", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view kNumberedDevices[] = {L"COM", L"LPT"};
constexpr std::wstring_view kDeviceNumbers =
    L"0123456789\u00B9\u00B2\u00B3";  // the system takes superscripts as digits

// The system sees a device in these names whatever extension follows, in any folder.
bool IsDeviceName(std::wstring_view part) {
    std::wstring_view stem = part.substr(0, part.find(L'.'));
    while (stem.ends_with(L' ')) {
        stem.remove_suffix(1);
    }
    const auto isOneOf = [](std::wstring_view name, const auto& devices) {
        return std::ranges::any_of(devices, [name](auto device) { return EqualIgnoringCase(name, device); });
    };
    return isOneOf(stem, kDevices) || (stem.size() == 4 && kDeviceNumbers.find(stem[3]) != std::wstring_view::npos &&
                                       isOneOf(stem.substr(0, 3), kNumberedDevices));
}

bool IsPlainPart(std::wstring_view part) {
    const auto isForbidden = [](wchar_t character) {
        return character < L' ' || kForbidden.find(character) != std::wstring_view::npos;
    };
    // A part of dots alone, "." and ".." among them, ends in a dot.
    return !part.empty() && part.back() != L'.' && part.back() != L' ' && std::ranges::none_of(part, isForbidden) &&
           !IsDeviceName(part);
}

bool IsPlainRelativePath(std::wstring_view path) {
    const std::size_t separator = path.find(L'\\');
    return IsPlainPart(path.substr(0, separator)) &&
           (separator == std::wstring_view::npos || IsPlainRelativePath(path.substr(separator + 1)));
}

}  // namespace

std::optional<EntryName> CheckEntryName(std::string_view stored, bool utf8) {
    EntryName name;
    name.wide = utf8 ? Utf8ToWide(stored) : AnsiToWide(stored);
    std::ranges::replace(name.wide, L'/', L'\\');
    name.narrow = WideToAnsi(name.wide);
    // A character that is not in the code page may be converted to another one, even to a separator.
    if (!IsPlainRelativePath(name.wide) || AnsiToWide(name.narrow) != name.wide) {
        return std::nullopt;
    }
    return name;
}

}  // namespace wrb
