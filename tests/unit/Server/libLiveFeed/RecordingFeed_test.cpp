#include "RecordingFeed.h"

#include <memory>

#include "AccessOf.h"

namespace wrb {
namespace {

using Bytes = std::vector<uint8_t>;

struct RecordingFeedTest : testing::Test {
    void Write(std::size_t message, std::size_t answer) {
        RecordedCommand command;
        command.beginMicroseconds = ++written;
        feed->Write(command, Bytes(message, static_cast<uint8_t>(written)),
                    Bytes(answer, static_cast<uint8_t>(~written)));
    }

    // The number of the next record, which must be whole; 0: there is none.
    int64_t Read(std::size_t message, std::size_t answer) {
        std::string record;
        if (!feed->Read(record)) {
            return 0;
        }
        const auto view = ViewCommandRecord({reinterpret_cast<const uint8_t*>(record.data()), record.size()});
        EXPECT_TRUE(view);
        const auto number = view->command.beginMicroseconds;
        EXPECT_TRUE(std::ranges::equal(view->message, Bytes(message, static_cast<uint8_t>(number))));
        EXPECT_TRUE(std::ranges::equal(view->answer, Bytes(answer, static_cast<uint8_t>(~number))));
        return number;
    }

    std::unique_ptr<RecordingFeed> feed = std::make_unique<RecordingFeed>();  // zeros
    int64_t written = 0;
};

TEST_F(RecordingFeedTest, EveryRecordComesOutWhereverTheQueueEnds) {
    ASSERT_TRUE(feed->Begin(1));
    for (std::size_t i = 0; i < 3000; ++i) {
        const std::size_t message = i * 7 % 9001;
        const std::size_t answer = i * 13 % 8009;
        Write(message, answer);
        ASSERT_EQ(Read(message, answer), written);
        ASSERT_EQ(Read(0, 0), 0);
    }
    EXPECT_EQ(feed->Missed(), 0u);
}

TEST_F(RecordingFeedTest, WhatDoesNotFitIsCountedAndNothingIsOverwritten) {
    constexpr std::size_t kRest = sizeof(RecordedCommand);
    constexpr std::size_t kHalf = RecordingFeed::kQueueBytes / 2 - kRest;
    feed->CountMissed();
    ASSERT_TRUE(feed->Begin(1));
    EXPECT_EQ(feed->Missed(), 0u) << "before it began";
    Write(RecordingFeed::kQueueBytes - kRest + 1, 0);
    EXPECT_EQ(feed->Missed(), 1u);
    Write(kHalf, 0);
    Write(0, kHalf);
    Write(0, 0);
    EXPECT_EQ(feed->Missed(), 2u);
    EXPECT_EQ(Read(kHalf, 0), 2);
    Write(5, 6);
    EXPECT_EQ(Read(0, kHalf), 3);
    EXPECT_EQ(Read(5, 6), 5);
    EXPECT_EQ(Read(0, 0), 0);
}

TEST_F(RecordingFeedTest, HasOneReaderWhichBeginsWithWhatIsWrittenThen) {
    EXPECT_FALSE(feed->HasReader());
    Write(1, 1);
    ASSERT_TRUE(feed->Begin(7));
    EXPECT_EQ(Read(0, 0), 0);
    EXPECT_FALSE(feed->Begin(8));
    EXPECT_TRUE(feed->Look(7));
    EXPECT_FALSE(feed->Look(8));
    feed->End();
    EXPECT_FALSE(feed->HasReader());
    EXPECT_TRUE(feed->Begin(8));
}

// Lengths that a broken section may hold, in the first record's first word.
TEST_F(RecordingFeedTest, ABrokenLengthCostsRecordsOnly) {
    for (const uint32_t length : {0u, 8u, 31u, 4000u, 0xFFFFFFFFu}) {
        feed = std::make_unique<RecordingFeed>();
        ASSERT_TRUE(feed->Begin(1));
        Write(100, 0);
        std::memcpy(reinterpret_cast<char*>(feed.get()) + sizeof(RecordingFeed) - RecordingFeed::kQueueBytes, &length,
                    sizeof length);
        EXPECT_EQ(Read(0, 0), 0) << length;
        EXPECT_EQ(feed->Missed(), 1u);
        Write(3, 4);
        EXPECT_EQ(Read(3, 4), written);
    }
}

TEST(RecordingSectionTest, IsOpenToTheServersAccountsOnly) {
    OpenRecordingFeed();
    const KernelHandle section(OpenFileMappingW(READ_CONTROL, FALSE, RecordingSection(GetCurrentProcessId()).c_str()));
    const std::string access = test::AccessOf(section.Get());
    for (const char* account : {";;;SY)", ";;;BA)"}) {
        EXPECT_NE(access.find(account), access.npos) << access;
    }
    EXPECT_EQ(access.find(";;;SU)"), access.npos) << access;
    EXPECT_EQ(access.find(";;;WD)"), access.npos) << access;
    EXPECT_EQ(WatchedRecordingFeed(), nullptr);
}

}  // namespace
}  // namespace wrb
