#include "UnEscapeUrl.h"

#include "Text.h"

namespace {

int HexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char small = static_cast<char>(digit | 0x20);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

// The number of exactly `count` digits, or 0: an escape for NUL is no more welcome than a broken one.
unsigned HexNumber(std::string_view text, std::size_t offset, std::size_t count) {
    if (offset > text.size() || count > text.size() - offset) {
        return 0;
    }
    unsigned number = 0;
    for (const char digit : text.substr(offset, count)) {
        const int value = HexDigit(digit);
        if (value < 0) {
            return 0;
        }
        number = number * 16 + static_cast<unsigned>(value);
    }
    return number;
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
