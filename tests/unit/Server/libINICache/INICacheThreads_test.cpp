#include <gtest/gtest.h>

#include "FakeProfile.h"
#include "INICache.h"
#include "OnThreads.h"

namespace {

// Notices when two threads read the file at once.
class COneAtATimeProfile final : public CFakeProfile {
  public:
    std::string ReadString(const char* section, const char* key, const char* text, const char* path) override {
        if (++m_inside > 1) {
            overlapped = true;
        }
        std::this_thread::yield();
        std::string value = CFakeProfile::ReadString(section, key, text, path);
        --m_inside;
        return value;
    }

    std::atomic<bool> overlapped{false};

  private:
    std::atomic<int> m_inside{0};
};

// Every look finds every entry stale.
class CRacingClock final : public wrb::IClock {
  public:
    uint32_t TickMilliseconds() const override { return m_tick += 30001; }
    int64_t CalendarSeconds() const override { return 0; }

  private:
    mutable std::atomic<uint32_t> m_tick{0};
};

TEST(INICacheThreads, MissesComeOneAtATimeWhileOthersWriteAndClear) {
    CRacingClock clock;
    COneAtATimeProfile profile;
    profile.values["S/long"] = std::string(500, 'v');
    CINICache cache(clock, profile);
    wrb::test::OnThreads(8, [&](unsigned thread) {
        for (unsigned i = 0; i < 500; ++i) {
            wchar_t text[600];
            const std::string key = std::to_string(i % 7);
            EXPECT_EQ(cache.readINIInt("S", key.c_str(), static_cast<int32_t>(thread)), thread);
            EXPECT_EQ(cache.readINIString(text, L"S", L"long", L"", 600), 500u);
            if (i % 50 == thread) {
                cache.clear();
                cache.init("x.ini", 30);
            }
        }
    });
    EXPECT_FALSE(profile.overlapped);
}

}  // namespace
