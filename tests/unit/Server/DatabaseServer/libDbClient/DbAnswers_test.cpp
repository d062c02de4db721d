// How answers of every shape are read, the sound ones and the others, and what comes of a server that is absent or
// silent.
#include <gmock/gmock.h>

#include <algorithm>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "DbAgent.h"
#include "DbScanCfg.h"
#include "DbTransport.h"
#include "DbVexor.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "MsgSerializer.h"
#include "PipeServer.h"
#include "TempFolder.h"

namespace {

using testing::ElementsAre;
using testing::StartsWith;
using wrb::test::DbRequest;
using wrb::test::FakeDbService;
using wrb::test::WideBytes;

// A database server whose next answer the test sets; calls and answers take turns.
class DbAnswers : public testing::Test {
  protected:
    DbAnswers() : m_service([this](const DbRequest&) { return m_answer; }) {}

    std::string m_answer;
    FakeDbService m_service;
};

TEST_F(DbAnswers, NumberIsReadAsFarAsItGoes) {
    const std::pair<std::string, uint32_t> cases[] = {{WideBytes(L"12"), 12},
                                                      {WideBytes(L"-2147483647"), 0x80000001},
                                                      {WideBytes(L"4294967295"), 0xFFFFFFFF},
                                                      {WideBytes(L"2147483649"), 0x80000001},
                                                      {WideBytes(L"-99999999999999999999999999"), 0},
                                                      {WideBytes(L"7 and more"), 7},
                                                      {WideBytes(std::wstring_view(L"8\0009", 3)), 8},
                                                      {WideBytes(L"text"), 0},
                                                      {"", 0},
                                                      {"5", 0},
                                                      {WideBytes(L"66") + "6", 66}};  // half a character is none
    for (const auto& [answer, number] : cases) {
        m_answer = answer;
        uint32_t read = 99;
        EXPECT_TRUE(dbGetClientPlatW(L"uid", read, 0));
        EXPECT_EQ(read, number) << answer;
    }
}

TEST_F(DbAnswers, TextComesAsItIs) {
    for (const std::wstring& text : {std::wstring(L"domain\tuid"), std::wstring(), std::wstring(L"nul\0inside", 10),
                                     std::wstring(600'000, L'\u00E9')}) {
        m_answer = WideBytes(text) + (text.size() == 10 ? "x" : "");  // half a character is not looked at
        std::wstring read = L"old";
        EXPECT_TRUE(dbGetClnDomainNameAndUidW(L"uid", read, 0));
        EXPECT_TRUE(read == text) << text.size();
    }
}

TEST_F(DbAnswers, ListEndsAtTheFirstEmptyItem) {
    std::vector<std::wstring> items{L"old"};
    m_answer = WideBytes(L"one\ttwo\t\tfour");
    EXPECT_TRUE(dbGetSpywareWhiteListW(L"uid", items));
    EXPECT_THAT(items, ElementsAre(L"one", L"two"));
    m_answer = WideBytes(L"\t");
    EXPECT_TRUE(dbGetSpywareWhiteListW(L"uid", items));
    EXPECT_THAT(items, ElementsAre());
    EXPECT_EQ(m_service.WaitFor(2).size(), 2u) << "an answer is all that is asked for";
    m_answer = "";  // nothing for the agent; then nothing about whether it exists
    EXPECT_FALSE(dbGetSpywareWhiteListW(L"uid", items));
    const auto requests = m_service.WaitFor(4);
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[2].Name(), L"DB_GET_SPYWARE_WHITE_LIST");
    EXPECT_EQ(requests[3].Name(), L"DB_IS_CLIENT_EXISTED");
}

std::vector<std::wstring> LogOf(const std::function<void()>& call) {
    TakeCapturedLog();
    call();
    return TakeCapturedTexts();
}

TEST(DbFailures, AbsentServiceIsLoggedWithItsError) {
    EXPECT_THAT(LogOf([] { EXPECT_FALSE(dbSetAllConfFlgW(1, 2)); }),
                ElementsAre(L"[DbClient] Send DB_SET_ALL_CONF_FLG\t-1\t1\t2", L"Initial pipe client failed! err=2"));
    uint32_t number = 5;
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(dbGetStatusW(L"uid", number)); }),
                ElementsAre(StartsWith(L"[DbClient] SendAndRecv DB_GET_STATUS\t"),
                            L"SendAndRecv - Initial pipe client failed with win32 error code [2]"));
    EXPECT_EQ(number, 5u);
    wrb::CustomBmConfig cfg;
    EXPECT_THAT(
        LogOf([&] { EXPECT_FALSE(dbGetVexorCustomBmCfgW(L"uid", cfg)); }),
        ElementsAre(L"[dbSend] Send DBV2_GET_VEXOR_CUSTOM_BM_CFG", L"[dbSend] Initial pipe client failed! err=2",
                    L"[dbSendAndRecv] PipeSendAndRecv Failed! err=2",
                    L"dbGetVexorCustomBmCfgW - Fail to get vexor custom BM cfg."));
}

TEST(DbFailures, AnswerThatNeverComesEndsWithTheTimeOut) {
    const FakeDbService silent;
    CCmdProtocol request;
    const int32_t replyId = wrb::NewDbReplyId();
    request << L"DB_GET_IP" << replyId;
    CPipeServer server;
    EXPECT_EQ(wrb::SendAndRecv(request, replyId, server, 1, L""), 1);
    std::string answer;
    EXPECT_FALSE(server.FetchCmd(answer));

    CMsgSerializer message(L"DBV2_TEST");
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(dbSendAndRecv(message, L"caller", 1), 0); }),
                testing::Contains(L"[dbSendAndRecv] PipeServer.FetchCmd Failed!"));
}

TEST(DbFailures, AnAnswerForWhichNoMemoryIsLeftIsRefused) {
    const wrb::test::TempFolder folder;
    wrb::test::WriteAll(folder / L"server.ini", "[INI_SERVER_SECTION]\r\nAnswerMemoryInM=1\r\n");
    ServerIniCache().init((folder / L"server.ini").c_str(), 3600);
    const FakeDbService service([](const DbRequest&) { return WideBytes(L"answer"); });
    std::wstring text;
    for (const uint32_t bytes : {1u << 20, (1u << 20) + 1}) {
        wrb::AnswerMemory others;
        EXPECT_TRUE(others.Grow(bytes));
        const auto lines = LogOf([&] { EXPECT_EQ(dbGetIpW(L"uid", text, 0), bytes == 1u << 20); });
        EXPECT_EQ(std::ranges::count(lines, L"PipeServer.FetchCmd Failed!"), bytes == 1u << 20 ? 0 : 1);
    }
    ServerIniCache().init((folder / L"none").c_str(), 3600);
}

// The file of a request is deleted when nobody reads it: the answer is a time-out, or empty.
TEST(DbFailures, ALargeRequestLeavesNoFileWhenNobodyTakesIt) {
    for (const bool answers : {false, true}) {
        const FakeDbService service([=](const DbRequest&) { return answers ? std::optional("") : std::nullopt; });
        CMsgSerializer message(L"DBV2_TEST");
        message << std::wstring(2 << 20, L'x');
        message << uint32_t{1};
        EXPECT_TRUE(message.InFileMode());
        EXPECT_EQ(dbSendAndRecv(message, L"caller", 1), 0);
        const std::wstring path = service.WaitFor(1).at(0).Texts().at(2);
        EXPECT_TRUE(path.ends_with(L".tmp")) << path.size();
        EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    }
}

}  // namespace
