#include "CmdProtocol.h"

#include <algorithm>
#include <charconv>
#include <cwchar>

#include "Text.h"

namespace {

constexpr std::size_t kReservedCharacters = 1024;
constexpr std::size_t kNumberCharacters = 19;

std::size_t TextLength(const wchar_t* text, int64_t length) {
    if (text == nullptr) {
        return 0;
    }
    return length == -1 ? std::wcslen(text) : static_cast<std::size_t>(std::max<int64_t>(length, 0));
}

template <typename Integer>
std::wstring Decimal(Integer number) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return std::wstring(digits, end);
}

}  // namespace

CCmdProtocol::CCmdProtocol() {
    m_buffer.reserve(kReservedCharacters);
}

CCmdProtocol::CCmdProtocol(const wchar_t* text, int64_t byteCount) {
    // Half of -2 is -1, which would measure a text that need not be terminated.
    const int64_t length = byteCount < -1 ? 0 : byteCount == -1 ? -1 : byteCount / 2;
    m_buffer.assign(text == nullptr ? L"" : text, TextLength(text, length));
    m_firstField = m_buffer.empty();
}

CCmdProtocol& CCmdProtocol::Append(const wchar_t* text, int64_t length) {
    return AppendField(std::wstring_view(text == nullptr ? L"" : text, TextLength(text, length)));
}

CCmdProtocol& CCmdProtocol::operator<<(int32_t number) {
    return AppendField(Decimal(number));
}

CCmdProtocol& CCmdProtocol::operator<<(uint32_t number) {
    return AppendField(Decimal(number));
}

CCmdProtocol& CCmdProtocol::AppendField(std::wstring_view field) {
    const std::size_t needed = field.size() + m_delimiter.size();
    if (m_buffer.capacity() - m_buffer.size() < needed) {
        m_buffer.reserve(std::max(m_buffer.capacity() * 2, m_buffer.size() + needed));
    }
    if (!m_firstField) {
        m_buffer += m_delimiter;
    }
    m_firstField = false;
    m_buffer += field;
    return *this;
}

CCmdProtocol& CCmdProtocol::operator>>(std::wstring& field) {
    field.assign(NextField());
    return *this;
}

CCmdProtocol& CCmdProtocol::operator>>(uint32_t& number) {
    number = static_cast<uint32_t>(wrb::ParseInt32(NextField().substr(0, kNumberCharacters)));
    return *this;
}

std::wstring_view CCmdProtocol::NextField() {
    const std::wstring_view rest = std::wstring_view(m_buffer).substr(m_position);
    const std::size_t end = m_wholeDelimiter ? rest.find(m_delimiter) : rest.find_first_of(m_delimiter);
    if (end == std::wstring_view::npos) {
        m_position = m_buffer.size();
        return rest;
    }
    m_position += end + (m_wholeDelimiter ? m_delimiter.size() : 1);
    return rest.substr(0, end);
}
