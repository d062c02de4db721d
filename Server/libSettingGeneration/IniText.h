// The INI text that goes to agents: "[section]" lines and "key=value" lines, each ended by a single "\n", no blank
// line in between. Values stand as they are: nothing is quoted or escaped, an empty value leaves "key=".
//
// Everything here appends. Throws only for lack of memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// One line each. The section line is cut at 1023 characters, its line end included; an integer is shown signed; a
// bool is "1" or "0".
void AppendIniSection(std::wstring& out, std::wstring_view name);
void AppendIniString(std::wstring& out, std::wstring_view key, std::wstring_view value);
void AppendIniInt(std::wstring& out, std::wstring_view key, int32_t number);
void AppendIniBool(std::wstring& out, std::wstring_view key, bool bit);

namespace wrb {

// The same lines through a small buffer, which makes a section of thirty short lines cheap. The text is complete after
// Finish; what was written after it is lost.
class IniWriter {
  public:
    explicit IniWriter(std::wstring& out) noexcept : m_out(out) {}
    IniWriter(const IniWriter&) = delete;
    IniWriter& operator=(const IniWriter&) = delete;

    void Section(std::wstring_view name);
    void String(std::wstring_view key, std::wstring_view value) { Line(key, value, {}); }
    void Int(std::wstring_view key, int32_t number);
    void Bool(std::wstring_view key, bool bit) { Line(key, bit ? L"1" : L"0", {}); }

    // A value in two pieces.
    void Line(std::wstring_view key, std::wstring_view head, std::wstring_view tail);

    void Finish();

  private:
    static constexpr std::size_t kCapacity = 1024;

    std::wstring& m_out;
    std::size_t m_used = 0;
    wchar_t m_buffer[kCapacity];
};

}  // namespace wrb
