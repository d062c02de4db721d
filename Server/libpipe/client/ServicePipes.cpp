#include "ServicePipes.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace wrb {
namespace {

constexpr std::wstring_view kServicePipes[] = {kHostPipe,       kDbServerPipe, kLogPoolPipe,
                                               kLogServicePipe, kQmAgentPipe,  kWrbServerPipe};

// A name in its plain spelling: parts without trailing dots and blanks, one separator between them. Longer names than
// fit name no service.
class PlainName {
  public:
    explicit PlainName(std::wstring_view name) noexcept {
        while (!name.empty()) {
            const std::size_t end = std::min(name.find_first_of(L"\\/"), name.size());
            Add(name.substr(0, end));
            name.remove_prefix(std::min(end + 1, name.size()));
        }
    }

    std::wstring_view Text() const noexcept { return {m_text.data(), m_length}; }

  private:
    void Add(std::wstring_view part) noexcept {
        const std::wstring_view plain = part.substr(0, part.find_last_not_of(L". ") + 1);
        if (part == L"..") {
            const std::size_t separator = Text().rfind(L'\\');
            m_length = separator == std::wstring_view::npos ? 0 : separator;
        } else if (!plain.empty() && plain.size() < m_text.size() - m_length) {
            if (m_length != 0) {
                m_text[m_length++] = L'\\';
            }
            m_length += plain.copy(m_text.data() + m_length, plain.size());
        }
    }

    std::array<wchar_t, 260> m_text;
    std::size_t m_length = 0;
};

bool IsSame(std::wstring_view a, std::wstring_view b) noexcept {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

}  // namespace

bool NamesServicePipe(const wchar_t* name) noexcept {
    const PlainName plain(name == nullptr ? std::wstring_view() : std::wstring_view(name));
    return std::ranges::any_of(kServicePipes, [&](std::wstring_view pipe) { return IsSame(pipe, plain.Text()); });
}

}  // namespace wrb
