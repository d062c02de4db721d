#include "KeyText.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <map>

#include "EntryTable.h"
#include "Text.h"

namespace {

// One page that may be read, and after it one that may not: a text at its end must not be read beyond its terminator.
class CGuardedPage {
  public:
    CGuardedPage() : m_pages(static_cast<char*>(VirtualAlloc(nullptr, 2 * kPage, MEM_COMMIT, PAGE_READWRITE))) {
        DWORD before = 0;
        VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &before);
    }
    ~CGuardedPage() { VirtualFree(m_pages, 0, MEM_RELEASE); }
    CGuardedPage(const CGuardedPage&) = delete;
    CGuardedPage& operator=(const CGuardedPage&) = delete;

    template <typename Char>
    const Char* PutAtEnd(const std::basic_string<Char>& text) {
        const std::size_t bytes = (text.size() + 1) * sizeof(Char);
        char* place = m_pages + kPage - bytes;
        std::memcpy(place, text.c_str(), bytes);
        return reinterpret_cast<const Char*>(place);
    }

  private:
    static constexpr std::size_t kPage = 4096;
    char* m_pages;
};

TEST(EntryKey, NarrowAndWideFormsOfEveryLengthMakeTheSameKey) {
    CGuardedPage sectionPage;
    CGuardedPage keyPage;
    for (std::size_t length = 0; length < 300; ++length) {
        std::string section(length, ' ');
        for (std::size_t i = 0; i < length; ++i) {
            section[i] = static_cast<char>('!' + i % 90);
        }
        for (const std::size_t keyLength : {0u, 1u, 13u, 250u}) {
            const std::string key(keyLength, 'k');
            const std::string expected = section + ":" + key;
            const wrb::CEntryKey narrow(sectionPage.PutAtEnd(section), keyPage.PutAtEnd(key));
            ASSERT_EQ(narrow.View(), expected);
            const wrb::CEntryKey wide(sectionPage.PutAtEnd(std::wstring(section.begin(), section.end())),
                                      keyPage.PutAtEnd(std::wstring(key.begin(), key.end())));
            ASSERT_EQ(wide.View(), expected);
            ASSERT_EQ(wide.Hash(), narrow.Hash());
        }
    }
}

TEST(EntryKey, OneCharacterBeyondAsciiAnywhereGoesThroughTheCodePage) {
    CGuardedPage page;
    for (const wchar_t character : {L'\x80', L'\xE9', L'\u20AC', L'\u4E2D', L'\xFFFF'}) {
        for (std::size_t place = 0; place < 20; ++place) {
            std::wstring section(20, L's');
            section[place] = character;
            const wrb::CEntryKey key(page.PutAtEnd(section), L"k");
            EXPECT_EQ(key.View(), wrb::WideToAnsi(section) + ":k");
            EXPECT_EQ(wrb::CNarrowText(page.PutAtEnd(section)).Get(), wrb::WideToAnsi(section));
        }
    }
}

TEST(EntryTable, HoldsWhatAMapHolds) {
    wrb::CEntryTable<int> table;
    std::map<std::string, int> model;
    uint32_t random = 1;
    for (int i = 0; i < 20000; ++i) {
        random = random * 1664525 + 1013904223;
        const std::string name = std::to_string((random >> 16) % 700);
        const wrb::CEntryKey key("Section", name.c_str());
        switch ((random >> 8) % 4) {
            case 0:
                table.Erase(key);
                model.erase(name);
                break;
            case 1:
                table.FindOrAdd(key) = model[name] = i;
                break;
            default:
                const int* found = table.Find(key);
                ASSERT_EQ(found != nullptr, model.contains(name));
                ASSERT_TRUE(found == nullptr || *found == model[name]);
        }
    }
    table.Clear();
    EXPECT_EQ(table.Find(wrb::CEntryKey("Section", "1")), nullptr);
}

}  // namespace
