#include "LocalPath.h"

#include <algorithm>

#include "IgnoringCase.h"

namespace wrb {
namespace {

constexpr std::wstring_view kForbidden = L"<>:\"/\\|?*";
constexpr std::wstring_view kSeparators = L"\\/";
constexpr std::wstring_view kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CLOCK$", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view kNumberedDevices[] = {L"COM", L"LPT"};
constexpr std::wstring_view kDeviceNumbers =
    L"0123456789\u00B9\u00B2\u00B3";  // the system takes superscripts as digits

// The system sees a device in these names whatever extension follows, in any folder.
bool IsDeviceName(std::wstring_view name) {
    std::wstring_view stem = name.substr(0, name.find(L'.'));
    while (stem.ends_with(L' ')) {
        stem.remove_suffix(1);
    }
    const auto isOneOf = [](std::wstring_view text, const auto& devices) {
        return std::ranges::any_of(devices, [text](auto device) { return EqualIgnoringCase(text, device); });
    };
    return isOneOf(stem, kDevices) || (stem.size() == 4 && kDeviceNumbers.find(stem[3]) != std::wstring_view::npos &&
                                       isOneOf(stem.substr(0, 3), kNumberedDevices));
}

bool IsDriveLetter(wchar_t character) {
    return (character >= L'A' && character <= L'Z') || (character >= L'a' && character <= L'z');
}

bool IsPathPart(std::wstring_view part) {
    return part.empty() || part == L"." || part == L".." || IsPlainFileName(part);
}

}  // namespace

bool IsPlainFileName(std::wstring_view name) {
    const auto isForbidden = [](wchar_t character) {
        return character < L' ' || kForbidden.find(character) != std::wstring_view::npos;
    };
    return !name.empty() && name.back() != L'.' && name.back() != L' ' && std::ranges::none_of(name, isForbidden) &&
           !IsDeviceName(name);
}

bool IsDrivePath(std::wstring_view path) {
    if (path.size() < 3 || !IsDriveLetter(path[0]) || path[1] != L':' ||
        kSeparators.find(path[2]) == std::wstring_view::npos) {
        return false;
    }
    for (std::size_t at = 3; at <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(kSeparators, at), path.size());
        if (!IsPathPart(path.substr(at, end - at))) {
            return false;
        }
        at = end + 1;
    }
    return true;
}

bool LiesBelow(std::wstring_view path, std::wstring_view folder) {
    if (folder.ends_with(L'\\')) {
        folder.remove_suffix(1);
    }
    return !folder.empty() && path.size() > folder.size() + 1 && path[folder.size()] == L'\\' &&
           EqualIgnoringCase(path.substr(0, folder.size()), folder);
}

}  // namespace wrb
