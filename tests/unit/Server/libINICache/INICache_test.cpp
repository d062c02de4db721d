#include "INICache.h"

#include <gtest/gtest.h>

#include <thread>

#include "CapturedLog.h"
#include "DebugLog.h"
#include "FakeProfile.h"
#include "Handle.h"
#include "ManualClock.h"
#include "OnThreads.h"
#include "SystemText.h"
#include "TempFolder.h"
#include "Text.h"

namespace {

struct INICache : testing::Test {
    // The entry as a number and as a text.
    std::string Read(int bypass = 0) {
        char text[8];
        const uint32_t number = cache.readINIInt("S", "k", 0, bypass);
        cache.readINIString(text, "S", "k", "", sizeof text, bypass);
        return std::to_string(number) + text;
    }

    ManualClock clock{0xFFFFFFFF};  // about to wrap
    FakeProfile profile;
    CINICache cache{clock, profile};
};

TEST_F(INICache, AnEntryIsFreshUpToAndIncludingTheExpiryAndABypassOfOneLeavesIt) {
    cache.init("C:\\x.ini", 6);
    profile.values["S/k"] = "1";
    EXPECT_EQ(Read(), "11");
    profile.values["S/k"] = "2";
    EXPECT_EQ(Read(1), "22");
    EXPECT_EQ(Read(2), "11") << "only 1 bypasses";
    clock.AdvanceTick(6000);
    EXPECT_EQ(Read(), "11");
    clock.AdvanceTick(1);
    EXPECT_EQ(Read(), "22");
    EXPECT_EQ(profile.reads, 6);
}

TEST_F(INICache, ASectionExpiresAndIsDroppedLikeAKey) {
    const auto lines = [&](int bypass = 0) {
        std::wstring text;
        return cache.readINISection(text, L"S", bypass) ? text : L"too long" + text;
    };
    const auto change = [&](const char* value, auto&& drop) {
        profile.values["S/k"] = value;
        drop();
    };
    EXPECT_EQ(lines(), L"");
    change("1", [] {});
    EXPECT_EQ(lines() + lines(1), L"k=1\n") << "only the bypass sees it";
    change("2", [&] { clock.AdvanceTick(30001); });
    EXPECT_EQ(lines(), L"k=2\n");
    change("3", [&] { cache.clear(); });
    EXPECT_EQ(lines(), L"k=3\n");
    change("4", [&] { cache.writeINIInt("S", "z", 9); });
    EXPECT_EQ(lines(), L"k=4\nz=9\n");
    change("5", [&] { cache.init("other.ini", 30); });
    profile.values["S/"] = "";
    EXPECT_EQ(lines() + lines(), L"too longtoo long");
    EXPECT_EQ(profile.reads, 6) << "that it is too long is kept, too";
}

TEST_F(INICache, TextsAreCutToTheBuffer) {
    profile.values["S/t"] = "0123456789";
    constexpr std::pair<uint32_t, std::string_view> kCases[] = {
        {4, "012"},  // first, so that a short reader would spoil the entry for the others
        {1, ""},    {10, "012345678"}, {11, "0123456789"}, {0xFFFFFFFF, "0123456789"}, {0, "#"}};  // 0: left alone
    for (const auto& [size, expected] : kCases) {
        char narrow[16] = "#";
        wchar_t wide[16] = L"#";
        const std::size_t result = size == 0 ? 0 : expected.size();
        EXPECT_EQ(cache.readINIString(narrow, "S", "t", "", size), result);
        EXPECT_EQ(cache.readINIString(wide, L"S", L"t", L"", size), result);
        EXPECT_EQ(narrow, expected);
        EXPECT_EQ(wide, std::wstring(expected.begin(), expected.end()));
    }
    EXPECT_EQ(profile.reads, 1);
}

TEST_F(INICache, AWriteIsTriedSixTimesAndDropsTheEntriesWhateverComesOfIt) {
    constexpr std::tuple<int, int, int> kCases[] = {{0, 1, 1}, {1, 1, 2}, {5, 1, 6}, {6, 0, 6}};
    for (const auto& [failures, result, attempts] : kCases) {
        SCOPED_TRACE(failures);
        profile.values["S/k"] = "1";
        cache.clear();
        EXPECT_EQ(Read(), "11");
        profile.failingWrites = failures;
        profile.writeAttempts = profile.reads = 0;
        profile.pauses.clear();

        EXPECT_EQ(cache.writeINIInt(L"S", L"k", -7), result);
        EXPECT_EQ(profile.writeAttempts, attempts);
        EXPECT_EQ(profile.pauses, std::vector<uint32_t>(static_cast<std::size_t>(failures), 100u));
        EXPECT_EQ(Read(), result != 0 ? "4294967289-7" : "11");
        EXPECT_EQ(profile.reads, 2) << "both reads go to the file";
    }
}

// Notices when two threads read the file at once.
class OneAtATimeProfile final : public FakeProfile {
  public:
    std::string ReadString(const char* section, const char* key, const char* text, const char* path) override {
        if (++m_inside > 1) {
            overlapped = true;
        }
        std::this_thread::yield();
        std::string value = FakeProfile::ReadString(section, key, text, path);
        --m_inside;
        return value;
    }

    std::atomic<bool> overlapped{false};

  private:
    std::atomic<int> m_inside{0};
};

// Every look finds every entry stale.
class RacingClock final : public wrb::IClock {
  public:
    uint32_t TickMilliseconds() const override { return m_tick += 30001; }
    uint64_t MonotonicMicroseconds() const override { return 0; }
    int64_t MonotonicSeconds() const override { return 0; }
    int64_t CalendarSeconds() const override { return 0; }

  private:
    mutable std::atomic<uint32_t> m_tick{0};
};

TEST(INICacheThreads, MissesComeOneAtATimeWhileOthersWriteAndClear) {
    RacingClock clock;
    OneAtATimeProfile profile;
    profile.values["S/long"] = std::string(500, 'v');
    CINICache cache(clock, profile);
    wrb::test::OnThreads(8, [&](unsigned thread) {
        for (unsigned i = 0; i < 500; ++i) {
            wchar_t text[600];
            const std::string key = std::to_string(i % 7);
            EXPECT_LT(cache.readINIInt("S", key.c_str(), static_cast<int32_t>(thread)), 8u) << "a thread's default";
            EXPECT_EQ(cache.readINIString(text, L"S", L"long", L"", 600), 500u);
            if (i % 50 == thread) {
                cache.clear();
                cache.init("x.ini", 30);
            }
        }
    });
    EXPECT_FALSE(profile.overlapped);
}

// Opened without sharing: what was read before stays in force, and a second later the file is tried again.
TEST(INICacheFile, AFileThatIsHeldTakesNoValueAway) {
    const wrb::test::TempFolder folder;
    const std::wstring path = (folder / L"held.ini").wstring();
    ManualClock clock;
    CINICache cache(clock);
    const auto read = [&](const char* key, int32_t byDefault) { return cache.readINIInt("S", key, byDefault); };
    const auto lines = [&] {
        std::wstring text;
        EXPECT_TRUE(cache.readINISection(text, L"S"));
        return text;
    };
    const auto hold = [&] {
        wrb::FileHandle held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(held);
        return held;
    };
    const std::wstring warning = L"CINICache - cannot read " + path + L", earlier values stay in force: " +
                                 wrb::WideSystemText(ERROR_SHARING_VIOLATION);
    wrb::test::WriteAll(path, "[S]\r\nk=1\r\n");
    cache.init(path.c_str(), 6);
    EXPECT_EQ(read("k", 0), 1u);
    EXPECT_EQ(lines(), L"k=1\n");
    wrb::test::WriteAll(path, "[S]\r\nk=2\r\nnew=3\r\n");
    clock.AdvanceTick(6001);
    TakeCapturedLog();
    wrb::FileHandle held = hold();
    EXPECT_EQ(read("k", 0), 1u);
    held.Reset();
    EXPECT_EQ(lines(), L"k=1\n");
    EXPECT_EQ(read("new", 7), 7u);
    cache.clear();
    EXPECT_EQ(read("k", 0), 1u) << "better than the default";
    clock.AdvanceTick(999);
    EXPECT_EQ(read("k", 0) + read("new", 8), 1u + 8u) << "not yet";
    clock.AdvanceTick(1);
    EXPECT_EQ(read("new", 9), 3u);
    EXPECT_EQ(read("k", 0), 2u);
    EXPECT_EQ(lines(), L"k=2\nnew=3\n");
    EXPECT_EQ(TakeCapturedLog(), (std::vector<CapturedLine>{{kLogWarning, warning}}));
    held = hold();
    for (int seconds = 0; seconds <= 60; ++seconds) {
        clock.AdvanceTick(1'000);
        EXPECT_EQ(read("unknown", 5), 5u);
    }
    EXPECT_EQ(TakeCapturedLog().size(), 1u) << "once a minute";
}

class HinderedProfile final : public FakeProfile {
  public:
    uint32_t WhileReadable(const char*, const std::function<void()>& read) override {
        read();
        return failures > 0 ? failures--, ERROR_OPERATION_ABORTED : ERROR_SUCCESS;
    }

    int failures = 0;
};

TEST(INICacheTries, OneFailureMakesNoDefaultOfAValueThatWasNeverRead) {
    ManualClock clock;
    HinderedProfile profile;
    profile.values["S/k"] = "1";
    for (const auto& [failures, wanted] : {std::pair(0, 1u), std::pair(1, 1u), std::pair(2, 7u)}) {
        CINICache cache(clock, profile);
        profile.failures = failures;
        EXPECT_EQ(cache.readINIInt("S", "k", 7), wanted);
    }
}

// Its reads succeed, or fail with an error, when the test says so.
class StuckProfile final : public FakeProfile {
  public:
    uint32_t WhileReadable(const char*, const std::function<void()>& read) override {
        read();
        isInside = isStuck.load();
        isStuck.wait(true);
        return error;
    }
    void LetGo(uint32_t result) {
        error = result;
        isStuck = false;
        isStuck.notify_all();
    }

    std::atomic<bool> isStuck{false};
    std::atomic<bool> isInside{false};
    std::atomic<uint32_t> error{0};
};

TEST(INICacheThreads, WhoHasAnOldValueDoesNotWaitForTheThreadThatReads) {
    ManualClock clock;
    StuckProfile profile;
    CINICache cache(clock, profile);
    const auto read = [&] { return cache.readINIInt("S", "k", 0); };
    for (const uint32_t error : {0u, 995u}) {
        profile.LetGo(0);
        cache.clear();
        profile.values["S/k"] = "1";
        EXPECT_EQ(read(), 1u);
        clock.AdvanceTick(30001);
        profile.isInside = false;
        profile.isStuck = true;
        std::jthread stuck([&] { EXPECT_EQ(read(), 1u); });
        wrb::test::WaitUntil([&] { return profile.isInside.load(); });
        EXPECT_EQ(read(), 1u);
        cache.writeINIInt("S", "other", 2);
        EXPECT_EQ(read(), 1u);
        std::jthread first([&] { EXPECT_EQ(cache.readINIInt("S", "new", 7), 7u); });
        profile.LetGo(error);
        stuck.join();
        first.join();
        profile.values["S/k"] = "3";
        EXPECT_EQ(read(), error == 0 ? 3u : 1u) << "what was read before a write is not kept";
        clock.AdvanceTick(1'000);
    }
}

TEST_F(INICache, NarrowAndWideTextsOfEveryLengthShareAnEntry) {
    for (const std::size_t length : {0u, 1u, 127u, 128u, 255u, 256u, 300u, 600u, 5000u}) {
        for (const char* last : {"", "x", "\xE9", "\xE9\xFFz"}) {
            const std::string section = std::string(length, 's') + last;
            const std::string key = last + std::string(length / 2, 'k');
            profile.reads = 0;
            EXPECT_EQ(cache.readINIInt(section.c_str(), key.c_str(), 5), 5u);
            EXPECT_EQ(cache.readINIInt(wrb::AnsiToWide(section).c_str(), wrb::AnsiToWide(key).c_str(), 6), 5u);
            EXPECT_EQ(profile.reads, 1) << length;
        }
    }
}

TEST(ProfileAccess, TextsOfEveryLengthComeBackWhole) {
    const wrb::test::TempFolder folder;
    const std::string path = (folder / L"profile.ini").string();
    wrb::IProfileAccess& profile = wrb::SystemProfile();
    for (const std::size_t length : {0u, 1u, 2046u, 2047u, 2048u, 5000u, 30000u}) {
        uint32_t error = 1;
        // Words of moderate length: the system may take one letter over and over for a file in Unicode.
        std::string value(length, ' ');
        for (std::size_t i = 0; i < length; ++i) {
            value[i] = "Worm,Trojan;"[i * 7 % 12];
        }
        ASSERT_NE(profile.WriteString("S", "k", value.c_str(), path.c_str(), error), 0);
        EXPECT_EQ(error, 0u);
        EXPECT_EQ(profile.ReadString("S", "k", "default", path.c_str()), value) << length;
    }
    uint32_t error = 1;
    ASSERT_NE(profile.WriteString("S", "k", nullptr, path.c_str(), error), 0);
    EXPECT_EQ(profile.ReadString("S", "k", "default", path.c_str()), "default");
}

TEST(ProfileAccess, ASectionHasTheValuesOfItsKeys) {
    const wrb::test::TempFolder folder;
    const std::string path = (folder / L"profile.ini").string();
    wrb::IProfileAccess& profile = wrb::SystemProfile();
    wrb::test::WriteAll(
        path,
        "[Other]\r\nx=1\r\n[S]\r\nb=2\r\n\r\n;c=3\r\n ; d=4\r\nno equals\r\n = no key\r\n  e \t=\t five \r\n"
        "q=\" x "
        "\"\r\nr='y'\r\ns=\"z\r\nt=\"\r\nempty=\r\neq=a=b\r\nB=again\r\nu=\xE9;w\r\n\xC4k=6\r\n\xE4K=7\r\n[Last]\r\ny="
        "1\r\n");
    const std::optional<std::string> lines = profile.ReadSection("S", path.c_str());
    ASSERT_TRUE(lines);
    EXPECT_EQ(*lines, "b=2\ne=five\nq= x \nr=y\ns=\"z\nt=\"\nempty=\neq=a=b\nu=\xE9;w\n\xC4k=6\n");
    for (std::size_t at = 0; at < lines->size(); at = lines->find('\n', at) + 1) {
        const std::size_t equals = lines->find('=', at);
        const std::string key = lines->substr(at, equals - at);
        EXPECT_EQ(profile.ReadString("S", key.c_str(), "none", path.c_str()),
                  lines->substr(equals + 1, lines->find('\n', at) - equals - 1))
            << key;
    }
    EXPECT_EQ(profile.ReadSection("Missing", path.c_str()), "");

    // Each line takes its characters and a terminator.
    for (const std::size_t length : {32767u, 32768u, 100'000u}) {
        std::string text = "[L]\r\n";
        for (std::size_t rest = length; rest > 0;) {
            const std::size_t line = rest > 2000 ? 1000 : rest;
            text += "key" + std::to_string(1'000'000 + rest) + "=" + std::string(line - 12, 'v') + "\r\n";
            rest -= line;
        }
        wrb::test::WriteAll(path, text);
        EXPECT_EQ(profile.ReadSection("L", path.c_str()).has_value(), length == 32767) << length;
    }
}

}  // namespace
