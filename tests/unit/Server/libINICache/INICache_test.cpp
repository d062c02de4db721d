#include "INICache.h"

#include <gtest/gtest.h>

#include "AllocationCount.h"
#include "FakeProfile.h"
#include "ManualClock.h"
#include "Text.h"

namespace {

class INICache : public testing::Test {
  protected:
    uint32_t Text(const char* key, const char* defaultText = "") {
        return cache.readINIString(buffer, "S", key, defaultText, sizeof buffer);
    }

    CManualClock clock;
    CFakeProfile profile;
    CINICache cache{clock, profile};
    char buffer[64] = {};
};

struct tagExpiryCase {
    uint32_t firstTick;
    uint32_t elapsed;
    int fileReads;
};

TEST(INICacheExpiry, AnEntryIsFreshUpToAndIncludingTheExpiry) {
    constexpr tagExpiryCase kCases[] = {
        {0, 5000, 1},          {0, 6000, 1},          {0, 6001, 2},
        {0, 7000, 2},          {0xFFFFF000, 5000, 1},  // the tick counter wraps between the two reads
        {0xFFFFF000, 7000, 2}, {0xFFFFFFFF, 6000, 1}, {0xFFFFFFFF, 6001, 2},
    };
    for (const tagExpiryCase& expiry : kCases) {
        SCOPED_TRACE(testing::Message() << expiry.firstTick << " + " << expiry.elapsed);
        CManualClock clock(expiry.firstTick);
        CFakeProfile profile;
        CINICache cache(clock, profile);
        cache.init("C:\\x.ini", 6);
        profile.values["S/number"] = "1";
        profile.values["S/text"] = "a";
        char text[8];
        cache.readINIInt("S", "number", 0);
        cache.readINIString(text, "S", "text", "", sizeof text);
        profile.values["S/number"] = "2";
        profile.values["S/text"] = "b";
        clock.AdvanceTick(expiry.elapsed);

        const bool again = expiry.fileReads == 2;
        EXPECT_EQ(cache.readINIInt("S", "number", 0), again ? 2u : 1u);
        cache.readINIString(text, "S", "text", "", sizeof text);
        EXPECT_STREQ(text, again ? "b" : "a");
        EXPECT_EQ(profile.reads, 2 * expiry.fileReads);
        // A stale entry is renewed in place: it is fresh again.
        cache.readINIInt("S", "number", 0);
        EXPECT_EQ(profile.reads, 2 * expiry.fileReads);
    }
}

TEST_F(INICache, AMissingKeyKeepsTheFirstDefault) {
    EXPECT_EQ(cache.readINIInt("S", "missing", 1), 1u);
    EXPECT_EQ(cache.readINIInt("S", "missing", 0), 1u);
    Text("missing", "first");
    EXPECT_EQ(Text("missing", "second"), 5u);
    EXPECT_STREQ(buffer, "first");
    EXPECT_EQ(profile.reads, 2) << "the number and the text are two entries";
}

TEST_F(INICache, KeysAreTheExactText) {
    cache.readINIInt("Global Setting", "Key", 1);
    EXPECT_EQ(cache.readINIInt("global setting", "Key", 2), 2u);
    EXPECT_EQ(cache.readINIInt("Global Setting", "key", 3), 3u);
    EXPECT_EQ(cache.readINIInt(L"Global Setting", L"Key", 4), 1u) << "wide and narrow forms share the entries";
    EXPECT_EQ(profile.reads, 3);
}

TEST_F(INICache, BypassOfOneReadsTheFileAndLeavesTheEntry) {
    profile.values["S/n"] = "1";
    profile.values["S/t"] = "old";
    cache.readINIInt("S", "n", 0);
    Text("t");
    profile.values["S/n"] = "2";
    profile.values["S/t"] = "new";

    EXPECT_EQ(cache.readINIInt("S", "n", 0, 1), 2u);
    EXPECT_EQ(cache.readINIInt("S", "n", 0, 2), 1u) << "only 1 bypasses";
    wchar_t wide[8];
    EXPECT_EQ(cache.readINIString(wide, L"S", L"t", L"", 8, 1), 3u);
    EXPECT_STREQ(wide, L"new");
    Text("t");
    EXPECT_STREQ(buffer, "old");
}

TEST_F(INICache, TextsAreCutToTheBuffer) {
    profile.values["S/t"] = "0123456789";
    constexpr struct {
        uint32_t size;
        uint32_t result;
        const char* narrow;
        const wchar_t* wide;
    } kCases[] = {
        {4, 3, "012", L"012"},  // first, so that a short reader would spoil the entry for the others
        {0, 0, "#", L"#"},
        {1, 0, "", L""},
        {10, 9, "012345678", L"012345678"},
        {11, 10, "0123456789", L"0123456789"},
        {0xFFFFFFFF, 10, "0123456789", L"0123456789"},
    };
    for (const auto& cut : kCases) {
        char narrow[16] = "#";
        wchar_t wide[16] = L"#";
        EXPECT_EQ(cache.readINIString(narrow, "S", "t", "", cut.size), cut.result);
        EXPECT_EQ(cache.readINIString(wide, L"S", L"t", L"", cut.size), cut.result);
        EXPECT_STREQ(narrow, cut.narrow);
        EXPECT_STREQ(wide, cut.wide);
    }
    EXPECT_EQ(profile.reads, 1);
}

TEST_F(INICache, NullTextsCountAsEmpty) {
    const char* noText = nullptr;
    const wchar_t* noWideText = nullptr;
    wchar_t wide[4] = L"#";
    EXPECT_EQ(cache.readINIInt(noText, noText, 7), 7u);
    EXPECT_EQ(cache.readINIInt(noWideText, noWideText, 8), 7u);
    EXPECT_EQ(cache.readINIString(buffer, noText, noText, noText, sizeof buffer), 0u);
    EXPECT_EQ(cache.readINIString(wide, noWideText, noWideText, noWideText, 4), 0u);
    EXPECT_STREQ(wide, L"");
    EXPECT_EQ(cache.readINIString(static_cast<char*>(nullptr), "S", "k", "text", 9), 0u);
    EXPECT_EQ(cache.readINIString(static_cast<wchar_t*>(nullptr), L"S", L"k", L"text", 9), 0u);
    EXPECT_EQ(cache.init(noWideText, 6), 1);
}

TEST_F(INICache, LongAndForeignTextsFindTheSameEntry) {
    const std::wstring section(300, L's');
    const std::wstring key = std::wstring(200, L'k') + L"\u00e4";
    // Through the code page and back, so that the test holds in any.
    const std::wstring value = wrb::AnsiToWide(wrb::WideToAnsi(L"caf\u00e9 " + std::wstring(40, L'v')));
    profile.values[wrb::WideToAnsi(section) + "/" + wrb::WideToAnsi(key)] = wrb::WideToAnsi(value);

    wchar_t wide[64];
    EXPECT_EQ(cache.readINIString(wide, section.c_str(), key.c_str(), L"", 64), wrb::WideToAnsi(value).size());
    EXPECT_EQ(wide, value);
    EXPECT_EQ(cache.readINIString(buffer, wrb::WideToAnsi(section).c_str(), wrb::WideToAnsi(key).c_str(), "", 64),
              wrb::WideToAnsi(value).size());
    EXPECT_EQ(profile.reads, 1);
}

TEST_F(INICache, InitSetsPathAndExpiry) {
    constexpr struct {
        bool exists;
        uint32_t seconds;
        int result;
        uint32_t expiryMs;
    } kCases[] = {{true, 6, 1, 6000}, {true, 0, 1, 30000}, {false, 6, 0, 30000}, {true, 0xFFFFFFFF, 1, 4294967000}};
    for (const auto& init : kCases) {
        CManualClock manual;
        CFakeProfile fake;
        CINICache fresh(manual, fake);
        fake.exists = init.exists;
        EXPECT_EQ(fresh.init(L"C:\\home\\x.ini", init.seconds), init.result);
        fresh.readINIInt("S", "k", 0);
        EXPECT_EQ(fake.lastPath, "C:\\home\\x.ini") << "the path is used even when the file is missing";
        manual.AdvanceTick(init.expiryMs);
        fresh.readINIInt("S", "k", 0);
        EXPECT_EQ(fake.reads, 1);
        manual.AdvanceTick(1);
        fresh.readINIInt("S", "k", 0);
        EXPECT_EQ(fake.reads, 2);
    }
}

TEST_F(INICache, PathIsCutAt260CharactersAndAnotherPathStartsEmpty) {
    cache.init(std::wstring(300, L'p').c_str(), 6);
    cache.readINIInt("S", "k", 1);
    EXPECT_EQ(profile.lastPath, std::string(260, 'p'));
    cache.init(std::string(260, 'p').c_str(), 6);
    EXPECT_EQ(cache.readINIInt("S", "k", 2), 1u) << "the same file: what is cached still holds";
    cache.init("other.ini", 6);
    EXPECT_EQ(cache.readINIInt("S", "k", 3), 3u);
}

TEST_F(INICache, ClearEmptiesBothMaps) {
    cache.readINIInt("S", "k", 1);
    Text("k", "a");
    cache.clear();
    EXPECT_EQ(cache.readINIInt("S", "k", 2), 2u);
    Text("k", "b");
    EXPECT_STREQ(buffer, "b");
}

TEST_F(INICache, AHitAllocatesNothing) {
    wchar_t wide[4096];
    profile.values["Manual Scan Configuration/ExtList"] = std::string(3000, 'x');
    const auto readAll = [&] {
        cache.readINIInt("Manual Scan Configuration", "PossibleVirusCustActInActiveAct", 0);
        cache.readINIInt(L"Manual Scan Configuration", L"PossibleVirusCustActInActiveAct", 0);
        cache.readINIString(buffer, "Manual Scan Configuration", "ExtList", "", sizeof buffer);
        return cache.readINIString(wide, L"Manual Scan Configuration", L"ExtList", L"default", 4096);
    };
    readAll();
    const std::size_t before = AllocationsOfThisThread();
    EXPECT_EQ(readAll(), 3000u);
    EXPECT_EQ(AllocationsOfThisThread(), before);
}

TEST(INICacheInstances, AreThreeAndExistBeforeAnybodyBindsThem) {
    EXPECT_NE(&ScanIniCache(), &ServerIniCache());
    EXPECT_NE(&ScanIniCache(), &SbaIniCache());
    EXPECT_EQ(&ScanIniCache(), &ScanIniCache());
    EXPECT_EQ(SbaIniCache().readINIInt(L"S", L"k", 5), 5u);
    ScanIniCache().clear();
    EXPECT_EQ(SbaIniCache().readINIInt(L"S", L"k", 6), 5u) << "clearing one leaves the others";
}

}  // namespace
