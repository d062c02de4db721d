#include "PipePath.h"

#include <string_view>

#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kPrefix = L"\\\\.\\pipe\\";

std::wstring_view View(const wchar_t* name) noexcept {
    return name == nullptr ? std::wstring_view() : std::wstring_view(name);
}

}  // namespace

bool FormatPipePath(wchar_t* buffer, std::size_t capacity, const wchar_t* name) noexcept {
    const std::wstring_view bare = View(name);
    FormatInto(buffer, capacity, L"\\\\.\\pipe\\%s", bare.empty() ? L"" : name);
    return bare.size() < capacity - kPrefix.size();
}

bool StaysInPipeNamespace(const wchar_t* name) noexcept {
    std::wstring_view rest = View(name);
    while (!rest.empty()) {
        const std::size_t end = rest.find_first_of(L"\\/");  // the system takes either for a separator
        const std::wstring_view part = rest.substr(0, end);
        if (!part.empty() && part.find_first_not_of(L". ") == std::wstring_view::npos) {
            return false;
        }
        rest = end == std::wstring_view::npos ? std::wstring_view() : rest.substr(end + 1);
    }
    return true;
}

}  // namespace wrb
