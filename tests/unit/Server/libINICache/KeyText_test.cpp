#include "KeyText.h"

#include <gtest/gtest.h>

#include <numeric>

#include "GuardedBytes.h"

namespace {

// A terminated text that must not be read beyond its end.
template <typename Char>
class CGuardedText {
  public:
    explicit CGuardedText(const std::string& text)
        : m_text(text.begin(), text.end()), m_bytes(m_text.c_str(), (text.size() + 1) * sizeof(Char)) {}
    operator const Char*() const { return reinterpret_cast<const Char*>(m_bytes.Start()); }

  private:
    std::basic_string<Char> m_text;
    wrb::test::CGuardedBytes m_bytes;
};

TEST(EntryKey, NarrowAndWideFormsOfEveryLengthMakeTheSameKey) {
    std::string letters(300, ' ');
    std::iota(letters.begin(), letters.begin() + 90, '!');
    std::copy(letters.begin(), letters.begin() + 210, letters.begin() + 90);
    for (std::size_t length = 0; length < letters.size(); ++length) {
        for (const std::size_t keyLength : {0u, 1u, 13u, 250u}) {
            const std::string section = letters.substr(0, length);
            const std::string key = letters.substr(3, keyLength);
            const wrb::CEntryKey narrow(CGuardedText<char>{section}, CGuardedText<char>{key});
            const wrb::CEntryKey wide(CGuardedText<wchar_t>{section}, CGuardedText<wchar_t>{key});
            ASSERT_EQ(narrow.View(), section + ":" + key);
            ASSERT_EQ(wide.View(), narrow.View());
            ASSERT_EQ(wide.Hash(), narrow.Hash());
        }
    }
}

}  // namespace
