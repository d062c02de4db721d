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

bool BeginsWith(std::wstring_view text, std::wstring_view beginning) noexcept {
    return text.size() >= beginning.size() && IsSame(text.substr(0, beginning.size()), beginning);
}

// Cuts "_" and a number off the end, or returns false.
bool CutNumber(std::wstring_view& text) noexcept {
    const std::size_t digits = text.find_last_not_of(L"0123456789") + 1;
    const std::size_t number = digits > 0 && text[digits - 1] == L'-' ? digits - 1 : digits;
    if (digits == text.size() || number == 0 || text[number - 1] != L'_') {
        return false;
    }
    text = text.substr(0, number - 1);
    return true;
}

// "0105", the message's name and a number, then the ids of a process and of a thread.
bool IsMessageId(std::wstring_view text) noexcept {
    return BeginsWith(text, L"0105") && CutNumber(text) && CutNumber(text);
}

}  // namespace

bool NamesServicePipe(const wchar_t* name) noexcept {
    const PlainName plain(name == nullptr ? std::wstring_view() : std::wstring_view(name));
    return std::ranges::any_of(kServicePipes, [&](std::wstring_view pipe) { return IsSame(pipe, plain.Text()); });
}

bool IsClosedToAnswers(const wchar_t* name) noexcept {
    const PlainName plain(name == nullptr ? std::wstring_view() : std::wstring_view(name));
    return NamesServicePipe(name) || BeginsWith(plain.Text(), L"DbCln_") || IsMessageId(plain.Text());
}

}  // namespace wrb
