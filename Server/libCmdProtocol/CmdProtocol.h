// CCmdProtocol: the text form of every command, one wide text of fields separated by single TAB characters.
//
// Grammar: field (TAB field)*. A field is any run of characters but TAB, and may be empty; nothing is quoted or
// escaped. Field 0 is the command name; field 1 the reply pipe of a command that answers; the rest are its parameters.
// The message carries no terminator and no length: both are the carrier's business.
//
// An object either builds a message or reads one, and belongs to one thread at a time. Reading never fails: past the
// end every field is empty and every number 0. Building throws only when memory is exhausted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class CCmdProtocol {
  public:
    // An empty message to build, with room for 1024 characters.
    CCmdProtocol();

    // A message to read. `byteCount` is twice the number of characters; -1 measures a zero-terminated text, any
    // other negative count is 0.
    explicit CCmdProtocol(const wchar_t* text, int64_t byteCount = -1);

    virtual ~CCmdProtocol() = default;
    CCmdProtocol(const CCmdProtocol&) = default;
    CCmdProtocol& operator=(const CCmdProtocol&) = default;

    // Each call appends one field and returns the message, so that calls chain. A null text appends an empty field;
    // `length` counts characters, -1 measures a zero-terminated text, any other negative length is 0.
    CCmdProtocol& Append(const wchar_t* text, int64_t length);
    CCmdProtocol& operator<<(const wchar_t* text) { return Append(text, -1); }
    CCmdProtocol& operator<<(const std::wstring& text) { return AppendField(text); }
    CCmdProtocol& operator<<(int32_t number);
    CCmdProtocol& operator<<(uint32_t number);

    // Each call takes the next field and returns the message, so that calls chain.
    CCmdProtocol& operator>>(std::wstring& field);

    // Reads the field as a signed decimal number from at most its first 19 characters and stores its bit pattern.
    CCmdProtocol& operator>>(uint32_t& number);

    // The whole message, for sending; valid until the next append. Not terminated as far as the view goes, but the
    // character after it is always NUL.
    std::wstring_view Text() const noexcept { return m_buffer; }

    // True once every character has been read. The empty field after a TAB at the very end is then still to come, as
    // it is for an empty message.
    bool AtEnd() const noexcept { return m_position == m_buffer.size(); }

  private:
    CCmdProtocol& AppendField(std::wstring_view field);
    std::wstring_view NextField();

    std::wstring m_delimiter{L"\t"};
    std::wstring m_buffer;
    uint64_t m_position = 0;
    bool m_firstField = true;
    bool m_wholeDelimiter = false;  // a field ends at the whole delimiter instead of at any of its characters
};
