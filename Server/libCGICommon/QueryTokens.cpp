#include "QueryTokens.h"

#include <algorithm>
#include <charconv>

#include "Text.h"

namespace wrb {
namespace {

// The first run of characters outside `separators`; `text` is left with what follows the run and one separator.
std::string_view NextRun(std::string_view& text, std::string_view separators) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
    const std::string_view run = text.substr(0, text.find_first_of(separators));
    text.remove_prefix(std::min(run.size() + 1, text.size()));
    return run;
}

// The number of exactly `count` hexadecimal digits, or 0: an escape for NUL is refused like a broken one.
unsigned HexNumber(std::string_view text, std::size_t offset, std::size_t count) {
    const std::string_view digits = text.substr(std::min(offset, text.size()), count);
    unsigned number = 0;
    const char* const end = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return digits.size() == count && end == digits.data() + count ? number : 0;
}

// Collects bytes until a UTF-16 unit or the end of the text: a character may take several.
class DecodedText {
  public:
    void AddByte(char byte) { m_bytes += byte; }
    void AddUnit(wchar_t unit) {
        Flush();
        m_text += unit;
    }
    std::wstring Take() {
        Flush();
        return std::move(m_text);
    }

  private:
    void Flush() {
        if (!m_bytes.empty()) {
            m_text += Utf8ToWide(m_bytes);
            m_bytes.clear();
        }
    }

    std::string m_bytes;
    std::wstring m_text;
};

}  // namespace

std::vector<std::string_view> SplitQuery(char* text, std::size_t size) {
    char* const end = std::find(text, text + size, '\0');
    std::replace(text, end, '+', ' ');
    std::string_view rest(text, static_cast<std::size_t>(end - text));
    std::vector<std::string_view> tokens;
    for (std::string_view token; !(token = NextRun(rest, "&\r\n")).empty();) {
        tokens.push_back(token);
    }
    return tokens;
}

NameAndValue SplitToken(std::string_view token) noexcept {
    NameAndValue result;
    result.name = NextRun(token, ": =\"");
    result.value = NextRun(token, "\"\r\n");
    return result;
}

std::wstring PercentDecode(std::string_view text) {
    DecodedText decoded;
    for (std::size_t i = 0; i < text.size();) {
        const bool escape = text[i] == '%';
        const bool unit = escape && i + 1 < text.size() && (text[i + 1] | 0x20) == 'u';
        const unsigned number = !escape ? 0 : unit ? HexNumber(text, i + 2, 4) : HexNumber(text, i + 1, 2);
        if (number == 0) {
            decoded.AddByte(text[i++]);
        } else if (unit) {
            decoded.AddUnit(static_cast<wchar_t>(number));
            i += 6;
        } else {
            decoded.AddByte(static_cast<char>(number));
            i += 3;
        }
    }
    return decoded.Take();
}

}  // namespace wrb
