// An agent's uid as requests and sections carry it: a field of 37 characters, the terminator included.
#pragma once

#include <cstddef>
#include <string_view>

#include "AgentUid.h"

namespace wrb {

class UidField {
  public:
    // Cuts a longer text; null counts as empty.
    explicit UidField(const wchar_t* uid) noexcept {
        while (uid != nullptr && m_length < kUidCharacters && uid[m_length] != L'\0') {
            m_text[m_length] = uid[m_length];
            ++m_length;
        }
    }

    // An empty uid stands for the server as a whole.
    bool IsEmpty() const noexcept { return m_length == 0; }
    const wchar_t* CStr() const noexcept { return m_text; }
    std::wstring_view View() const noexcept { return {m_text, m_length}; }

  private:
    std::size_t m_length = 0;
    wchar_t m_text[kUidCharacters + 1] = {};
};

}  // namespace wrb
