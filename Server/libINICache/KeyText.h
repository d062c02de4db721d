// Short-lived narrow texts of one cache call. What is short stays on the stack, so that a hit allocates nothing; a
// longer text goes to the heap and may throw std::bad_alloc. A null text counts as empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace wrb {

// A text in the system's ANSI code page: a narrow one as it is, a wide one converted.
class NarrowText {
  public:
    explicit NarrowText(const char* text) noexcept : m_text(text != nullptr ? text : "") {}
    explicit NarrowText(const wchar_t* text);
    NarrowText(const NarrowText&) = delete;
    NarrowText& operator=(const NarrowText&) = delete;

    const char* Get() const noexcept { return m_text; }

  private:
    static constexpr std::size_t kInline = 128;

    char m_inline[kInline];
    std::string m_long;
    const char* m_text = m_inline;
};

// The key of an entry: section, ":", key, exactly as given, in the ANSI code page. (So section "a:b" with key "c" and
// section "a" with key "b:c" share an entry; no INI file of the server has a colon in a section's name.)
class EntryKey {
  public:
    EntryKey(const char* section, const char* key) { Compose(section, key); }
    EntryKey(const wchar_t* section, const wchar_t* key) { Compose(section, key); }
    EntryKey(const EntryKey&) = delete;
    EntryKey& operator=(const EntryKey&) = delete;

    std::string_view View() const noexcept { return std::string_view(m_text, m_length); }
    uint64_t Hash() const noexcept { return m_hash; }

  private:
    static constexpr std::size_t kInline = 256;

    template <typename Char>
    void Compose(const Char* section, const Char* key);
    void ComposeLong(const char* section, const char* key);

    char m_inline[kInline];
    std::string m_long;
    const char* m_text = m_inline;
    std::size_t m_length = 0;
    uint64_t m_hash = 0;
};

}  // namespace wrb
