// The attempts to deliver a mail, with the clock set by hand and a server that does as it is told.
#include "MailQueue.h"

#include <gmock/gmock.h>

#include "CapturedLog.h"
#include "Handle.h"
#include "ManualClock.h"
#include "TempFolder.h"

namespace wrb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::wstring kFirst = L"000000000001-00000000-00000000-00000000";

struct MailQueueTest : testing::Test {
    MailQueueTest() {
        EXPECT_EQ(m_folder.Store(kFirst, "first"), 0u);
        EXPECT_EQ(m_folder.Store(L"000000000002-00000000-00000000-00000000", "second"), 0u);
        TakeCapturedLog();
    }

    // What is sent in one pass.
    std::vector<std::string> Work(bool stopping = false) {
        m_sent.clear();
        m_queue.Work([stopping] { return stopping; });
        return m_sent;
    }
    bool Exists(const std::wstring& file) const { return std::filesystem::exists(m_home / L"Temp\\Mail" / file); }

    TempFolder m_home;
    const MailFolder m_folder{m_home.Path() + L"\\"};
    ManualClock m_clock;
    std::string m_refused;  // the text of the mail that the server does not take
    std::vector<std::string> m_sent;
    MailQueue m_queue{m_folder, m_clock, [this](const std::string& text) {
                          m_sent.push_back(text);
                          return text == m_refused ? std::optional<std::string>("refused") : std::nullopt;
                      }};
};

TEST_F(MailQueueTest, OldestFirstAndGoneWhenSent) {
    EXPECT_THAT(Work(true), IsEmpty());
    EXPECT_THAT(Work(), ElementsAre("first", "second"));
    EXPECT_THAT(m_folder.Waiting(), IsEmpty());
    EXPECT_THAT(Work(), IsEmpty());
}

TEST_F(MailQueueTest, ARefusedMailIsTriedFiveTimes) {
    m_refused = "first";
    EXPECT_THAT(Work(), ElementsAre("first", "second"));
    for (const int64_t minutes : {1, 5, 15, 60}) {
        m_clock.AdvanceSeconds(minutes * 60 - 1);
        EXPECT_THAT(Work(), IsEmpty()) << minutes;
        EXPECT_TRUE(Exists(kFirst + L".eml"));
        m_clock.AdvanceSeconds(1);
        EXPECT_THAT(Work(), ElementsAre("first")) << minutes;
    }
    EXPECT_FALSE(Exists(kFirst + L".eml"));
    EXPECT_TRUE(Exists(kFirst + L".failed"));
    std::vector<CapturedLine> lines = TakeCapturedLog();
    std::erase_if(lines, [](const CapturedLine& line) { return line.level != 'E'; });
    EXPECT_THAT(lines, ElementsAre(CapturedLine{
                           'E', L"MailQueue - the mail " + kFirst + L".eml is given up after 5 attempts: refused"}));
    m_clock.AdvanceSeconds(100'000);
    EXPECT_THAT(Work(), IsEmpty());
}

TEST_F(MailQueueTest, AnAttemptThatTheStopInterruptsDoesNotCount) {
    m_refused = "first";
    m_queue.Work([this] { return !m_sent.empty(); });
    EXPECT_THAT(m_sent, ElementsAre("first"));
    EXPECT_THAT(Work(), ElementsAre("first", "second"));
}

TEST_F(MailQueueTest, AMailThatCannotBeDeletedIsNotSentTwice) {
    const FileHandle open(CreateFileW((m_home / L"Temp\\Mail" / (kFirst + L".eml")).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_THAT(Work(), ElementsAre("first", "second"));
    m_clock.AdvanceSeconds(60);
    EXPECT_THAT(Work(), IsEmpty());
    EXPECT_TRUE(Exists(kFirst + L".eml"));
}

}  // namespace
}  // namespace wrb::test
