#include "KeyText.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

namespace {

constexpr std::size_t kPage = 4096;

// Of its two pages the second may not be touched: a text at the end of the first must not be read beyond its end.
char* NewGuardedPage() {
    auto* const pages = static_cast<char*>(VirtualAlloc(nullptr, 2 * kPage, MEM_COMMIT, PAGE_READWRITE));
    DWORD before = 0;
    VirtualProtect(pages + kPage, kPage, PAGE_NOACCESS, &before);
    return pages;
}

template <typename Char>
const Char* PutAtEnd(char* page, const std::basic_string<Char>& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(Char);
    return static_cast<const Char*>(std::memcpy(page + kPage - bytes, text.c_str(), bytes));
}

TEST(EntryKey, NarrowAndWideFormsOfEveryLengthMakeTheSameKey) {
    char* const sectionPage = NewGuardedPage();
    char* const keyPage = NewGuardedPage();
    for (std::size_t length = 0; length < 300; ++length) {
        std::string section(length, ' ');
        for (std::size_t i = 0; i < length; ++i) {
            section[i] = static_cast<char>('!' + i % 90);
        }
        for (const std::size_t keyLength : {0u, 1u, 13u, 250u}) {
            const std::string key(keyLength, 'k');
            const std::string expected = section + ":" + key;
            const wrb::CEntryKey narrow(PutAtEnd(sectionPage, section), PutAtEnd(keyPage, key));
            ASSERT_EQ(narrow.View(), expected);
            const wrb::CEntryKey wide(PutAtEnd(sectionPage, std::wstring(section.begin(), section.end())),
                                      PutAtEnd(keyPage, std::wstring(key.begin(), key.end())));
            ASSERT_EQ(wide.View(), expected);
            ASSERT_EQ(wide.Hash(), narrow.Hash());
        }
    }
    VirtualFree(sectionPage, 0, MEM_RELEASE);
    VirtualFree(keyPage, 0, MEM_RELEASE);
}

}  // namespace
