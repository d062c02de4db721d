#include "UnEscapeUrl.h"

#include <algorithm>
#include <charconv>

#include "Text.h"

namespace {

// The number of exactly `count` hexadecimal digits, or 0: an escape for NUL is refused like a broken one.
unsigned HexNumber(std::string_view text, std::size_t offset, std::size_t count) {
    const std::string_view digits = text.substr(std::min(offset, text.size()), count);
    unsigned number = 0;
    const char* const end = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return digits.size() == count && end == digits.data() + count ? number : 0;
}

// Bytes wait until they are complete characters; a UTF-16 unit ends them.
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
            m_text += wrb::Utf8ToWide(m_bytes);
            m_bytes.clear();
        }
    }

    std::string m_bytes;
    std::wstring m_text;
};

}  // namespace

std::wstring cgi_UnEscapeUrl(std::string_view text) {
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
