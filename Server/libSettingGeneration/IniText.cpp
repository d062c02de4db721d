#include "IniText.h"

#include <charconv>
#include <cstring>
#include <iterator>

namespace wrb {
namespace {

constexpr std::size_t kSectionLineLimit = 1023;
constexpr std::size_t kLongestInt32 = 11;  // "-2147483648"

template <std::size_t N>
void CopyBlock(wchar_t* to, const wchar_t* from) {
    std::memcpy(to, from, N * sizeof(wchar_t));
}

// Keys and values are short: copies of a fixed length, the last one reaching back over the one before, cost a fraction
// of a library call. Returns the end of what was written.
inline wchar_t* CopyShort(wchar_t* to, std::wstring_view text) {
    const wchar_t* const from = text.data();
    const std::size_t count = text.size();
    if (count >= 8) {
        for (std::size_t done = 0; count - done > 8; done += 8) {
            CopyBlock<8>(to + done, from + done);
        }
        CopyBlock<8>(to + count - 8, from + count - 8);
    } else if (count >= 4) {
        CopyBlock<4>(to, from);
        CopyBlock<4>(to + count - 4, from + count - 4);
    } else if (count >= 2) {
        CopyBlock<2>(to, from);
        CopyBlock<2>(to + count - 2, from + count - 2);
    } else if (count == 1) {
        *to = *from;
    }
    return to + count;
}

}  // namespace

void IniWriter::Section(std::wstring_view name) {
    Finish();
    std::size_t room = kSectionLineLimit;
    for (std::wstring_view piece : {std::wstring_view(L"["), name, std::wstring_view(L"]\n")}) {
        piece = piece.substr(0, room);
        room -= piece.size();
        m_used = static_cast<std::size_t>(CopyShort(m_buffer + m_used, piece) - m_buffer);
    }
}

void IniWriter::Int(std::wstring_view key, int32_t number) {
    char digits[kLongestInt32] = {};
    const char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    wchar_t text[kLongestInt32];
    std::size_t length = 0;
    for (const char* digit = digits; digit != end; ++digit) {
        text[length++] = static_cast<wchar_t>(*digit);
    }
    String(key, {text, length});
}

void IniWriter::Line(std::wstring_view key, std::wstring_view head, std::wstring_view tail) {
    const std::size_t length = key.size() + head.size() + tail.size() + 2;
    if (length > kCapacity - m_used) {
        Finish();
    }
    if (length > kCapacity) {
        m_out.append(key).append(1, L'=').append(head).append(tail).append(1, L'\n');
        return;
    }
    wchar_t* to = CopyShort(m_buffer + m_used, key);
    *to++ = L'=';
    to = CopyShort(to, head);
    to = CopyShort(to, tail);
    *to = L'\n';
    m_used += length;
}

void IniWriter::Finish() {
    m_out.append(m_buffer, m_used);
    m_used = 0;
}

}  // namespace wrb

namespace {

template <typename Write>
void AppendLine(std::wstring& out, Write write) {
    wrb::IniWriter writer(out);
    write(writer);
    writer.Finish();
}

}  // namespace

void AppendIniSection(std::wstring& out, std::wstring_view name) {
    AppendLine(out, [&](wrb::IniWriter& writer) { writer.Section(name); });
}

void AppendIniString(std::wstring& out, std::wstring_view key, std::wstring_view value) {
    AppendLine(out, [&](wrb::IniWriter& writer) { writer.String(key, value); });
}

void AppendIniInt(std::wstring& out, std::wstring_view key, int32_t number) {
    AppendLine(out, [&](wrb::IniWriter& writer) { writer.Int(key, number); });
}

void AppendIniBool(std::wstring& out, std::wstring_view key, bool bit) {
    AppendLine(out, [&](wrb::IniWriter& writer) { writer.Bool(key, bit); });
}
