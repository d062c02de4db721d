// A database server that is absent, silent or broken: what the functions return and what they log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "DbAgent.h"
#include "DbAllScan.h"
#include "DbScanCfg.h"
#include "DbTransport.h"
#include "DbVexor.h"
#include "FakeDbService.h"
#include "MsgSerializer.h"
#include "PipeServer.h"
#include "WirePage.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::StartsWith;
using wrb::test::CFakeDbService;
using wrb::test::tagDbRequest;

std::vector<std::wstring> LogOf(const std::function<void()>& call) {
    TakeCapturedLog();
    call();
    std::vector<std::wstring> texts;
    for (tagCapturedLine& line : TakeCapturedLog()) {
        texts.push_back(std::move(line.text));
    }
    return texts;
}

TEST(DbFailures, AbsentServiceIsLoggedWithItsError) {
    EXPECT_THAT(LogOf([] { EXPECT_FALSE(dbSetAllConfFlgW(1, 2)); }),
                ElementsAre(L"[DbClient] Send DB_SET_ALL_CONF_FLG\t-1\t1\t2", L"Initial pipe client failed! err=2"));
    uint32_t number = 5;
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(dbGetStatusW(L"uid", number)); }),
                ElementsAre(StartsWith(L"[DbClient] SendAndRecv DB_GET_STATUS\t"),
                            L"SendAndRecv - Initial pipe client failed with win32 error code [2]"));
    EXPECT_EQ(number, 5u);
    tagVEXORCustomBmCfg cfg;
    EXPECT_THAT(
        LogOf([&] { EXPECT_FALSE(dbGetVexorCustomBmCfgW(L"uid", cfg)); }),
        ElementsAre(L"[dbSend] Send DBV2_GET_VEXOR_CUSTOM_BM_CFG", L"[dbSend] Initial pipe client failed! err=2",
                    L"[dbSendAndRecv] PipeSendAndRecv Failed! err=2",
                    L"dbGetVexorCustomBmCfgW - Fail to get vexor custom BM cfg."));
}

TEST(DbFailures, EmptyUidIsLogged) {
    uint32_t status = 0;
    EXPECT_THAT(LogOf([&] { dbGetStatusW(L"", status); }), ElementsAre(L"dbGetStatusW - UID is empty"));
}

TEST(DbFailures, AnswerThatNeverComesEndsWithTheTimeOut) {
    const CFakeDbService silent;
    CCmdProtocol request;
    const int32_t replyId = wrb::NewDbReplyId();
    request << L"DB_GET_IP" << replyId;
    CPipeServer server;
    EXPECT_EQ(wrb::SendAndRecv(request, replyId, server, 1, L""), 1);
    std::string answer;
    EXPECT_FALSE(server.FetchCmd(answer));

    CMsgSerializer message(L"DBV2_TEST");
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(dbSendAndRecv(message, L"caller", 1), 0); }),
                Contains(L"[dbSendAndRecv] PipeServer.FetchCmd Failed!"));
}

TEST(DbFailures, ReplyPipeThatIsTakenIsLogged) {
    const CFakeDbService service;
    const int32_t replyId = wrb::NewDbReplyId();
    const wrb::test::CFakePipeService squatter(L"DbCln_" + std::to_wstring(replyId));
    CCmdProtocol request;
    request << L"DB_GET_IP" << replyId;
    CPipeServer server;
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(wrb::SendAndRecv(request, replyId, server, 1, L""), 0); }),
                Contains(L"SendAndRecv - Initial pipe server failed"));
    CMsgSerializer message(L"DBV2_TEST");
    const wrb::test::CFakePipeService other(message.Id());
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(dbSendAndRecv(message, L"caller", 1), 0); }),
                Contains(L"[PipeSendAndRecvW] Initial pipe server failed!"));
    EXPECT_TRUE(dbSetAllConfFlgW(1, 2));
    EXPECT_EQ(service.WaitFor(1).size(), 1u) << "nothing but the write was sent";
}

TEST(DbFailures, EmptyAnswerIsNoRecordAndNoMessage) {
    const CFakeDbService service([](const tagDbRequest&) { return std::string(); });
    tagScanGroupValues values;
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(dbGetSpywareMscfW(L"uid", values)); }),
                Contains(L"DB_GET_SPYWARE_MSCF - empty answer"));
    std::wstring text = L"old";
    EXPECT_TRUE(dbGetExtraW(L"uid", 1, text));
    EXPECT_EQ(text, L"");
    tagClnAllScanCfg cfg;
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(dbGetClnAllScanCfgW(L"uid", cfg, L"caller")); }),
                Contains(L"dbSendAndRecv - empty answer to DBV2_CLIENT_GET_ALL_SCAN_CFG"));
}

// The whole way over the pipes: no cut of a sound answer is taken for one, and the next call works.
TEST(DbFailures, SerializedAnswerCutAnywhereIsRefused) {
    const std::string example = wrb::test::WirePageExample();
    std::size_t length = 0;
    const CFakeDbService service([&](const tagDbRequest&) { return example.substr(0, length); });
    tagClnAllScanCfg cfg;
    for (; length < example.size(); ++length) {
        EXPECT_FALSE(dbGetClnAllScanCfgW(L"uid", cfg, L"caller")) << length;
    }
    EXPECT_TRUE(dbGetClnAllScanCfgW(L"uid", cfg, L"caller"));
}

TEST(DbFailures, SerializedAnswerChangedAnywhereNeverThrows) {
    const std::string example = wrb::test::WirePageExample();
    std::string answer;
    const CFakeDbService service([&](const tagDbRequest&) { return answer; });
    tagClnAllScanCfg cfg;
    for (std::size_t offset = 0; offset < example.size(); offset += 4) {
        answer = example;
        answer.replace(offset, 4, 4, '\xFF');
        EXPECT_NO_THROW(dbGetClnAllScanCfgW(L"uid", cfg, L"caller")) << offset;
    }
    answer = example;
    EXPECT_TRUE(dbGetClnAllScanCfgW(L"uid", cfg, L"caller"));
}

TEST(DbFailures, UnreadableAnswerIsLoggedWithItsCause) {
    const CFakeDbService service([](const tagDbRequest&) { return std::string("garbage, more than four bytes"); });
    tagClnAllScanCfg cfg;
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(dbGetClnAllScanCfgW(L"uid", cfg, L"caller")); }),
                Contains(StartsWith(L"dbSendAndRecv - Out of range, (0), [")));
}

// A database server that closes the connection within the frame. Its pipe holds the magic and no more, so the client
// never comes further.
class CDeafDbService {
  public:
    CDeafDbService()
        : m_pipe(CreateNamedPipeW(L"\\\\.\\pipe\\DbServerNamePipe", PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE, 1, 0, 4, 0,
                                  nullptr)),
          m_thread([this] {
              ConnectNamedPipe(m_pipe.Get(), nullptr);
              m_pipe.Reset();
          }) {}
    ~CDeafDbService() { m_thread.join(); }

  private:
    wrb::CFileHandle m_pipe;
    std::thread m_thread;
};

CMsgSerializer& FillBeyondMemory(CMsgSerializer& message) {
    message << std::wstring(2 << 20, L'x');
    message << uint32_t{1};
    EXPECT_TRUE(message.InFileMode());
    return message;
}

TEST(DbFailures, ALargeRequestThatFindsNoServiceStaysWhole) {
    CMsgSerializer message(L"DBV2_TEST");
    FillBeyondMemory(message);
    const uint32_t size = message.GetSize();
    EXPECT_EQ(dbSend(message, L"caller"), 0);
    EXPECT_TRUE(message.InFileMode());
    const CFakeDbService service;
    EXPECT_EQ(dbSend(message, L"caller"), 1);
    const std::wstring path = service.WaitFor(1).at(0).Texts().at(2);
    WIN32_FILE_ATTRIBUTE_DATA file{};
    EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file));
    EXPECT_EQ(file.nFileSizeLow, size);
    message.DiscardSentFile();
}

// The file of a request is deleted when nobody reads it: the answer is a time-out, or empty.
TEST(DbFailures, ALargeRequestLeavesNoFileWhenNobodyTakesIt) {
    const CFakeDbService::Answer answers[] = {
        {},
        [](const tagDbRequest&) { return std::string(); },
    };
    for (const CFakeDbService::Answer& answer : answers) {
        const CFakeDbService service(answer);
        CMsgSerializer message(L"DBV2_TEST");
        EXPECT_EQ(dbSendAndRecv(FillBeyondMemory(message), L"caller", 1), 0);
        const std::wstring path = service.WaitFor(1).at(0).Texts().at(2);
        EXPECT_TRUE(path.ends_with(L".tmp")) << path.size();
        EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    }
}

TEST(DbFailures, AServiceThatGoesAwayIsOneLine) {
    const CDeafDbService service;
    CMsgSerializer message(L"DBV2_TEST");
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(dbSend(message, L"caller"), 0); }),
                ElementsAre(L"[dbSend] Send DBV2_TEST", L"SendDbApiHeader - fail to send DB API header"));
}

}  // namespace
