// The three one-way clients against fakes of their services: bytes on the pipe, results and log lines.
#include <gmock/gmock.h>
#include <json/reader.h>
#include <json/writer.h>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "ComInitiator.h"
#include "FakeDbService.h"
#include "FakePipeService.h"
#include "HostAddress.h"
#include "LogId.h"
#include "LogPoolRecord.h"
#include "MsgSerializer.h"
#include "QmAgentClient.h"
#include "ServicePipes.h"
#include "Text.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"

namespace {

using testing::_;
using testing::ElementsAre;
using testing::MatchesRegex;
using wrb::test::FakePipeService;

constexpr wrb::FirewallLogEntry kEntry = {
    L"uid-1", L"20240131", L"235958", L"10.0.0.7", L"fe80::1%5", 6, 65535, 2, 443, 1, L"C:\\\u00DC\t\"x\"", L"info", 0};

std::vector<CapturedLine> LogOf(const std::function<void()>& call) {
    TakeCapturedLog();
    call();
    return TakeCapturedLog();
}

std::string OneMessage(const wchar_t* pipe, const std::function<int()>& send) {
    const FakePipeService service(pipe);
    EXPECT_EQ(send(), 1);
    const auto messages = service.WaitFor(1);
    return messages.size() == 1 ? messages[0].bytes : "no message";
}

std::vector<std::wstring> TextsOf(const std::string& message) {
    wrb::test::DbRequest request;
    request.request = message;
    return request.Texts();
}

// The row behind the message's name and id.
std::string RowOf(const wchar_t* command, const std::function<int()>& send) {
    const std::vector<std::wstring> texts = TextsOf(OneMessage(wrb::kLogPoolPipe, send));
    EXPECT_THAT(texts, ElementsAre(command, _, _));
    return texts.size() == 3 ? wrb::WideToUtf8(texts[2]) : "no row";
}

TEST(ServiceClients, TextsTravelWithTheirNul) {
    _putenv_s("TZ", "UTC0");
    _tzset();
    wrb::FirewallLogEntry entry = kEntry;
    entry.localHost = L"10.0.0.7\t1";  // an address does not move the numbers
    entry.remoteHost = L"fe80::1%5\n";
    wrb::FirewallLogEntry undated = entry;
    undated.date = L"";
    const std::wstring rest = L"\t10.0.0.7\tfe80::1%5\t6\t65535\t2\t443\t1\t0\tC:\\\u00DC\t\"x\"\tinfo";
    const std::pair<std::function<int()>, std::wstring> cases[] = {
        {[] { return qmaSendRtsStatusChange(0); }, L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t0"},
        {[] { return qmaSendRtsStatusChange(0xFFFFFFFF); }, L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t4294967295"},
        {[&] { return qmaSendFirewallLog(entry); }, L"CMDHQM_SEND_FIREWALL_LOG\tuid-1\t1706745598" + rest},
        {[&] { return qmaSendFirewallLog(undated); }, L"CMDHQM_SEND_FIREWALL_LOG\tuid-1\t0" + rest},
    };
    for (const auto& [send, text] : cases) {
        EXPECT_EQ(OneMessage(wrb::kQmAgentPipe, send), wrb::test::WideBytes(text + L'\0')) << wrb::WideToUtf8(text);
    }
}

// The row is written by hand: the JSON writer must make the same of it, whatever the texts hold.
TEST(LogPool, FirewallRowIsWhatTheJsonWriterMakes) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    std::wstring all;
    for (wchar_t character = 1; character < 0x180; ++character) {
        all += character;
    }
    for (const std::wstring& text :
         {all, std::wstring(), std::wstring(L"\"\\/\b\f\n\r\t\x1F\x7F"), std::wstring(L"\xD83D\xDE00"),
          std::wstring(L"\xD83D"), std::wstring(L"\xDE00\xD83D"), std::wstring(L"a\xD83D\xD83D\xDE00z\xFFFF\x2028"),
          std::wstring(5000, L'"')}) {
        wrb::FirewallLogEntry entry = kEntry;
        entry.uid = entry.processPath = text.c_str();
        std::istringstream in(wrb::WideToUtf8(wrb::CfwLogRow(entry)));
        Json::Value row;
        ASSERT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), in, &row, nullptr));
        EXPECT_EQ(row["COL"]["UID"].asString(), wrb::WideToUtf8(text));
        EXPECT_EQ(wrb::CfwLogRow(entry), wrb::Utf8ToWide(Json::writeString(builder, row)));
    }
}

TEST(ServiceClients, RestoreLogIsARowWithANewIdAndTheTime) {
    const auto row = [] {
        return RowOf(L"CMDLOGV2_SEND_RESTORELOG", [] { return dbSetRestoreLogW(L"uid-2", -1, 7); });
    };
    const std::string first = row();
    EXPECT_THAT(first, MatchesRegex(R"(\{"CATEGORY":"RestoreLogFieldInfo","COL":\{"LOGID":")"
                                    R"(........-....-....-....-............","LOG_TYPE":-1,)"
                                    R"("RECV_TIME":"20..-..-.. ..:..:..","RESULT":7,"UID":"uid-2"\},)"
                                    R"("TBL":"TBL_RESTORE_LOG","VER":3\})"));
    const std::string id = first.substr(first.find("LOGID") + 8, 36);
    EXPECT_EQ(id.find_first_not_of("0123456789abcdef-"), id.npos) << id;
    EXPECT_EQ(row().find(id), id.npos);
}

// The pool's client gives the block away, the agent-command client keeps it; a large message travels as a path.
TEST(ServiceClients, AnyMessageIsFinalizedAndSentWhole) {
    const std::wstring large(1'200'000, L'x');
    constexpr struct {
        const wchar_t* pipe;
        int (*send)(CMsgSerializer&);
        bool keepsBlock;
    } kClients[] = {{wrb::kLogPoolPipe, cmdlog_OutputCmd, false}, {wrb::kWrbServerPipe, wrbSendMessage, true}};
    for (const auto& client : kClients) {
        CMsgSerializer small(L"SMALL");
        small << L"body";
        const uint32_t size = small.GetSize();
        EXPECT_EQ(OneMessage(client.pipe, [&] { return client.send(small); }).size(), size);
        EXPECT_EQ(small.GetSize(), client.keepsBlock ? size : 0);

        CMsgSerializer message(L"LARGE");
        message << large << L"in the file" << 7u << L"end";
        const std::wstring id = message.Id();
        const std::string sent = OneMessage(client.pipe, [&] { return client.send(message); });
        EXPECT_LT(sent.size(), 1000u);
        CMsgSerializer received;
        ASSERT_TRUE(received.Load(sent.data(), static_cast<uint32_t>(sent.size())));
        std::wstring texts[3];
        uint32_t number = 0;
        received >> texts[0] >> texts[1] >> number >> texts[2];
        EXPECT_TRUE(texts[0] == large && texts[1] == L"in the file" && number == 7 && texts[2] == L"end");
        EXPECT_EQ(received.Id(), id);
    }
}

// Readers of the log look for the modules under these names.
TEST(ServiceClients, AnAbsentServiceIsOneLineInTheNameOfItsModule) {
    CMsgSerializer message(L"KEPT");
    const uint32_t size = message.GetSize();
    const std::wstring plain = L"Initial pipe client failed! err=2";
    const std::wstring pool = L"init pipe client [Global\\LogPoolCommandManager] failed! err=[2]";
    const std::wstring poolClient = L"Server\\CmdAPI\\libCmdAPILogPool\\cmdlog_OutputCmd.cpp";
    const std::tuple<std::function<int()>, std::wstring, std::wstring> cases[] = {
        {[] { return qmaSendRtsStatusChange(1); }, plain, L"Server\\CmdAPI\\libCmdAPI\\QmAgentClient.cpp"},
        {[] { return wrbSetSpywareLogEvent(0); }, plain, L"Server\\MasterService\\libWrbClient\\WrbClient.cpp"},
        {[] { return dbSetRestoreLogW(nullptr, 0, 0); }, pool, poolClient},
        {[&] { return cmdlog_OutputCmd(message); }, pool, poolClient},
    };
    for (const auto& row : cases) {
        const std::wstring& text = std::get<1>(row);
        const std::wstring& file = std::get<2>(row);
        SCOPED_TRACE(wrb::WideToUtf8(file));
        std::vector<CapturedLine> lines = LogOf([&row] { EXPECT_EQ(std::get<0>(row)(), 0); });
        std::erase(lines, CapturedLine{'D', L"[caClient] Send CMDHQM_EVENT_RTS_STATUS_CHANGE\t1"});
        ASSERT_THAT(lines, ElementsAre(CapturedLine{'E', text}));
        EXPECT_EQ(lines[0].sourceFile, file);
        EXPECT_GT(lines[0].line, 0u);
    }
    EXPECT_EQ(message.GetSize(), size) << "a message that found no service is as it was";
}

TEST(LogPool, AddressesBecomeSixteenBytes) {
    EXPECT_EQ(wrb::HostAddressHex(L"::ffff:1.2.3.4"), "00000000000000000000FFFF01020304");
    EXPECT_EQ(wrb::HostAddressHex(L"2001:db8::a"), "20010DB800000000000000000000000A");
    for (const wchar_t* const text :
         {static_cast<const wchar_t*>(nullptr), L"", L"1.2.3", L"1.2.3.400", L"2001:db8::x"}) {
        EXPECT_EQ(wrb::HostAddressHex(text), std::string(32, '0'));
    }
}

TEST(LogPool, ComKeepsTheModelThatTheThreadHas) {
    const std::wstring guard = L"CComInitiator::";
    EXPECT_THAT(LogOf([] {
                    const UTIL::CComInitiator outer(COINIT_APARTMENTTHREADED);
                    const UTIL::CComInitiator inner(COINIT_MULTITHREADED);
                }),
                testing::ElementsAreArray<CapturedLine>(
                    {{'W', guard + L"CComInitiator - CoInitializeEx failed due to the thread model change "
                                   L"(RPC_E_CHANGED_MODE) with COM error code: [-2147417850]."},
                     {'W', guard + L"CComInitiator - Keep the original thread model."},
                     {'D', guard + L"~CComInitiator - Due to CoInitializeEx failed, skip to call CoUninitialize."}}));
    wchar_t id[36];
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(cwCreateGUID(id, std::size(id))); }),
                ElementsAre(CapturedLine{'E', L"cwCreateGUID - Fail to get result, HRESULT=0x8007007a"}));
    // Both guards gave back what they took: the thread is free for the other model.
    EXPECT_TRUE(LogOf([] { const UTIL::CComInitiator free(COINIT_MULTITHREADED); }).empty());
}

}  // namespace
