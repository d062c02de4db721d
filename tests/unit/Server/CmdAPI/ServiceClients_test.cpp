// The three one-way clients against fakes of their services: bytes on the pipe, results and log lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/reader.h>

#include <functional>
#include <memory>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "ComInitiator.h"
#include "FakeDbService.h"
#include "FakePipeService.h"
#include "HostAddress.h"
#include "LogId.h"
#include "MsgSerializer.h"
#include "QmAgentClient.h"
#include "Text.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;
using wrb::test::CFakePipeService;

constexpr tagFirewallLogEntry kEntry = {L"uid-1", L"20240131", L"235958", L"10.0.0.7",          L"fe80::1%5", 6, 65535,
                                        2,        443,         1,         L"C:\\\u00DC\t\"x\"", L"info",      0};

std::vector<tagCapturedLine> LogOf(const std::function<void()>& call) {
    TakeCapturedLog();
    call();
    return TakeCapturedLog();
}

std::string OneMessage(const wchar_t* pipe, const std::function<int()>& send) {
    const CFakePipeService service(pipe);
    EXPECT_EQ(send(), 1);
    const auto messages = service.WaitFor(1);
    return messages.size() == 1 ? messages[0].bytes : "no message";
}

std::vector<std::wstring> TextsOf(const std::string& message) {
    return wrb::test::tagDbRequest{message, {}, message}.Texts();
}

// The row behind the message's name and id.
Json::Value RowOf(const std::string& message, const std::wstring& command) {
    const std::vector<std::wstring> texts = TextsOf(message);
    Json::Value row;
    if (texts.size() == 3 && texts[0] == command && texts[2].find(L'\n') == std::wstring::npos) {
        const std::string text = wrb::WideToUtf8(texts[2]);
        const Json::CharReaderBuilder builder;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &row, nullptr)) << text;
    }
    return row;
}

TEST(ServiceClients, TextsTravelWithTheirNul) {
    using namespace std::string_literals;
    EXPECT_EQ(OneMessage(kQmAgentPipe, [] { return qmaSendRtsStatusChange(0); }),
              wrb::test::WideBytes(L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t0\0"s));
    EXPECT_EQ(OneMessage(kQmAgentPipe, [] { return qmaSendRtsStatusChange(0xFFFFFFFF); }),
              wrb::test::WideBytes(L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t4294967295\0"s));
    // The seconds depend on the machine's time zone; another day of the same year is a known number of them away.
    const auto seconds = [](const wchar_t* date) {
        tagFirewallLogEntry entry = kEntry;
        entry.date = date;
        entry.localHost = L"10.0.0.7\t1";  // an address does not move the numbers
        entry.remoteHost = L"fe80::1%5\n";
        const std::string bytes = OneMessage(kQmAgentPipe, [&] { return qmaSendFirewallLog(entry); });
        const std::vector<std::wstring> fields = wrb::test::tagDbRequest{bytes, {}, bytes}.Fields();
        EXPECT_EQ(fields.size(), 14u);  // one TAB stands in the path
        EXPECT_THAT(fields, ElementsAre(L"CMDHQM_SEND_FIREWALL_LOG", L"uid-1", testing::_, L"10.0.0.7", L"fe80::1%5",
                                        L"6", L"65535", L"2", L"443", L"1", L"0", L"C:\\\u00DC", L"\"x\"", L"info"));
        return wrb::ParseInt64(fields[2]);
    };
    EXPECT_EQ(seconds(L"20240131") - seconds(L"20240130"), 86400);
    EXPECT_EQ(seconds(L""), 0);
}

TEST(ServiceClients, FirewallLogIsARowOfThePool) {
    const Json::Value row =
        RowOf(OneMessage(kLogPoolPipe, [] { return cmdlog_SendCfwLog(kEntry); }), L"CMDLOGV2_SEND_CFWLOG");
    Json::Value expected;
    expected["TBL"] = "TBL_CFW_LOG";
    expected["VER"] = 3;
    expected["CATEGORY"] = "CfwLogFieldInfo";
    Json::Value& columns = expected["COL"];
    columns["UID"] = "uid-1";
    columns["DATE"] = "2024-01-31 23:59:58";
    columns["LOCAL_HOST"] = "00000000000000000000FFFF0A000007";
    columns["REMOTEHOST"] = "FE800000000000000000000000000001";
    columns["PROTOCOL"] = 6;
    columns["TYPE"] = 65535;
    columns["SUBTYPE"] = 2;
    columns["PORT"] = 443;
    columns["DIRECTION"] = 1;
    columns["PV_NAME"] = "C:\\\xC3\x9C\t\"x\"\tinfo";
    columns["LOG_TYPE"] = 0;
    EXPECT_EQ(row, expected) << row.toStyledString();
}

TEST(ServiceClients, RestoreLogIsARowWithANewIdAndTheTime) {
    const auto send = [] { return dbSetRestoreLogW(L"uid-2", -1, 7); };
    const Json::Value row = RowOf(OneMessage(kLogPoolPipe, send), L"CMDLOGV2_SEND_RESTORELOG");
    const Json::Value& columns = row["COL"];
    const std::string id = columns["LOGID"].asString();
    EXPECT_EQ(id.find_first_not_of("0123456789abcdef-"), id.npos) << id;
    EXPECT_THAT(id, MatchesRegex("........-....-....-....-............"));
    EXPECT_THAT(columns["RECV_TIME"].asString(), MatchesRegex("20..-..-.. ..:..:.."));
    EXPECT_EQ(columns.size(), 5u);
    EXPECT_EQ(columns["UID"], "uid-2");
    EXPECT_EQ(columns["LOG_TYPE"], -1);
    EXPECT_EQ(columns["RESULT"], 7);
    EXPECT_EQ(row["TBL"], "TBL_RESTORE_LOG");
    EXPECT_EQ(row["VER"], 3);
    EXPECT_EQ(row["CATEGORY"], "RestoreLogFieldInfo");
    EXPECT_NE(RowOf(OneMessage(kLogPoolPipe, send), L"CMDLOGV2_SEND_RESTORELOG")["COL"]["LOGID"], id);
}

TEST(ServiceClients, SpywareEventIsOneInteger) {
    const std::string bytes = OneMessage(kWrbServerPipe, [] { return wrbSetSpywareLogEvent(2); });
    EXPECT_EQ(TextsOf(bytes).at(0), L"WC_SET_SPYWARE_LOG_EVENT");
    EXPECT_EQ(bytes.substr(bytes.size() - 8), std::string("\x04\0\0\0\x02\0\0\0", 8));
}

// The pool's client gives the block away, the agent-command client keeps it; a large message travels as a path.
TEST(ServiceClients, AnyMessageIsFinalizedAndSentWhole) {
    const std::wstring large(1'200'000, L'x');
    constexpr struct {
        const wchar_t* pipe;
        int (*send)(CMsgSerializer&);
        bool keepsBlock;
    } kClients[] = {{kLogPoolPipe, cmdlog_OutputCmd, false}, {kWrbServerPipe, wrbSendMessage, true}};
    for (const auto& client : kClients) {
        CMsgSerializer small(L"SMALL");
        small << L"body";
        const uint32_t size = small.GetSize();
        EXPECT_EQ(OneMessage(client.pipe, [&] { return client.send(small); }).size(), size);
        EXPECT_EQ(small.GetSize(), client.keepsBlock ? size : 0);

        CMsgSerializer message(L"LARGE");
        message << large << L"end";
        const std::string sent = OneMessage(client.pipe, [&] { return client.send(message); });
        CMsgSerializer received;
        ASSERT_TRUE(received.Load(sent.data(), static_cast<uint32_t>(sent.size())));
        std::wstring body;
        std::wstring end;
        received >> body >> end;
        EXPECT_TRUE(body == large && end == L"end");
    }
}

TEST(ServiceClients, AbsentServiceIsOneLine) {
    const tagCapturedLine plain{'E', L"Initial pipe client failed! err=2"};
    const tagCapturedLine pool{'E', L"init pipe client [Global\\LogPoolCommandManager] failed! err=[2]"};
    EXPECT_THAT(LogOf([] { EXPECT_EQ(qmaSendRtsStatusChange(1), 0); }),
                ElementsAre(tagCapturedLine{'D', L"[caClient] Send CMDHQM_EVENT_RTS_STATUS_CHANGE\t1"}, plain));
    EXPECT_THAT(LogOf([] { EXPECT_EQ(wrbSetSpywareLogEvent(0), 0); }), ElementsAre(plain));
    EXPECT_THAT(LogOf([] { EXPECT_EQ(dbSetRestoreLogW(nullptr, 0, 0), 0); }), ElementsAre(pool));
    CMsgSerializer message(L"KEPT");
    const uint32_t size = message.GetSize();
    EXPECT_THAT(LogOf([&] { EXPECT_EQ(cmdlog_OutputCmd(message), 0); }), ElementsAre(pool));
    EXPECT_EQ(message.GetSize(), size) << "a message that found no service is as it was";
}

TEST(LogPool, AddressesBecomeSixteenBytes) {
    EXPECT_EQ(wrb::HostAddressHex(L"255.1.2.3"), "00000000000000000000FFFFFF010203");
    EXPECT_EQ(wrb::HostAddressHex(L"::ffff:1.2.3.4"), "00000000000000000000FFFF01020304");
    EXPECT_EQ(wrb::HostAddressHex(L"2001:db8::a"), "20010DB800000000000000000000000A");
    for (const wchar_t* const text :
         {static_cast<const wchar_t*>(nullptr), L"", L"1.2.3", L"1.2.3.400", L"2001:db8::x"}) {
        EXPECT_EQ(wrb::HostAddressHex(text), std::string(32, '0'));
    }
}

TEST(LogPool, ComKeepsTheModelThatTheThreadHas) {
    const auto other = LogOf([] {
        const UTIL::CComInitiator outer(COINIT_APARTMENTTHREADED);
        const UTIL::CComInitiator inner(COINIT_MULTITHREADED);
    });
    EXPECT_THAT(
        other,
        ElementsAre(
            tagCapturedLine{'W',
                            L"CComInitiator::CComInitiator - CoInitializeEx failed due to the thread model change "
                            L"(RPC_E_CHANGED_MODE) with COM error code: [-2147417850]."},
            tagCapturedLine{'W', L"CComInitiator::CComInitiator - Keep the original thread model."},
            tagCapturedLine{'D',
                            L"CComInitiator::~CComInitiator - Due to CoInitializeEx failed, skip to call "
                            L"CoUninitialize."}));
    wchar_t id[36];
    EXPECT_THAT(LogOf([&] { EXPECT_FALSE(cwCreateGUID(id, std::size(id))); }),
                ElementsAre(tagCapturedLine{'E', L"cwCreateGUID - Fail to get result, HRESULT=0x8007007a"}));
    // Both guards gave back what they took: the thread is free for the other model.
    EXPECT_TRUE(LogOf([] { const UTIL::CComInitiator free(COINIT_MULTITHREADED); }).empty());
}

}  // namespace
