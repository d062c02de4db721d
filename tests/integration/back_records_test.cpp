// The log pool, the central-management agent and the agent-command service: through the library's own clients, and past
// them.
#include <memory>
#include <mutex>
#include <sstream>

#include "BackEnd.h"
#include "MsgSerializer.h"
#include "OnThreads.h"
#include "PipeClient.h"
#include "QmAgentClient.h"
#include "RecordServer.h"
#include "ServicePipes.h"
#include "Store.h"
#include "Text.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"

namespace wrb::test {
namespace {

constexpr char kCfwRow[] =
    R"({"TBL":"TBL_CFW_LOG","COL":{"UID":"u","DATE":"2024-01-31 23:59:59",)"
    R"("LOCAL_HOST":"00000000000000000000FFFFC0000211","REMOTEHOST":"20010DB8000000000000000000000001","PROTOCOL":6,)"
    R"("TYPE":0,"SUBTYPE":1,"PORT":65535,"DIRECTION":2,"PV_NAME":"p\ti","LOG_TYPE":0},"VER":3,)"
    R"("CATEGORY":"CfwLogFieldInfo"})";
constexpr char kRestoreRow[] =
    R"({"TBL":"TBL_RESTORE_LOG","COL":{"LOGID":"l","UID":"u","RECV_TIME":"2024-01-31 23:59:59","LOG_TYPE":-1,)"
    R"("RESULT":2147483647},"VER":3,"CATEGORY":"RestoreLogFieldInfo"})";

constexpr FirewallLogEntry kEntry = {kFullAgent, L"20240131", L"235959", L"192.0.2.17",   L"2001:db8::1", 6, 9,
                                     1,          65535,       2,         L"C:\\\xFC.exe", L"info",        0};

std::string LogMessage(const wchar_t* command, const std::string& json) {
    CMsgSerializer message(command);
    message << Utf8ToWide(json);
    return BytesOf(message);
}

std::string AgentText(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t)};
}

std::string Replaced(std::string text, const std::string& part, const std::string& by) {
    const std::size_t at = text.find(part);
    return at == std::string::npos ? "the case replaces nothing" : text.replace(at, part.size(), by);
}

std::string CounterOf(const RecordServer& server) {
    const RecordServerCounters counters = server.Counters();
    return std::to_string(counters.stored) + " stored, " + std::to_string(counters.badMessages) + " refused, " +
           std::to_string(counters.lost) + " lost";
}

TEST(BackRecords, WhatTheClientsSendIsShownAsItWasSent) {
    BackEnd backEnd;
    EXPECT_EQ(cmdlog_SendCfwLog(kEntry), 1);
    EXPECT_EQ(dbSetRestoreLogW(kFullAgent, -1, 7), 1);
    EXPECT_EQ(qmaSendRtsStatusChange(0), 1);
    EXPECT_EQ(qmaSendFirewallLog(kEntry), 1);
    EXPECT_EQ(wrbSetSpywareLogEvent(-2), 1);
    const std::wstring database = backEnd.Database();
    std::string shown;
    for (int i = 0; i < 100 && shown.find("event: 3 of 3 rows") == std::string::npos; ++i) {
        shown = ExpectRun(kBackEnd, {L"events", L"--db", database}, 0);  // while it serves
    }
    EXPECT_NE(backEnd.Stop().find("records: 5 stored, 0 refused, 0 lost;"), std::string::npos);
    shown += ExpectRun(kBackEnd, {L"log-pool", L"--db", database, L"--json"}, 0);
    for (const char* part :
         {"CMDHQM_EVENT_RTS_STATUS_CHANGE        0\n", "WC_SET_SPYWARE_LOG_EVENT              -2\n",
          "192.0.2.17\\t2001:db8::1\\t6\\t9\\t1\\t65535\\t2\\t0\\tC:\\\xC3\xBC.exe\\tinfo\n", R"({"TBL_CFW_LOG": [)",
          R"("DATE":"2024-01-31 23:59:59")", R"("LOCAL_HOST":"00000000000000000000FFFFC0000211")",
          R"("REMOTEHOST":"20010DB8000000000000000000000001")", "\"PV_NAME\":\"C:\\\\\xC3\xBC.exe\\tinfo\"",
          R"("PORT":65535)", R"("PROTOCOL":6)", R"("SUBTYPE":1)", R"("TYPE":9)", R"("LOG_TYPE":0)", R"("DIRECTION":2)",
          R"(], "TBL_RESTORE_LOG": [)", R"("LOG_TYPE":-1)", R"("RESULT":7)"}) {
        EXPECT_NE(shown.find(part), std::string::npos) << part << shown;
    }
    const std::string one =
        ExpectRun(kBackEnd, {L"log-pool", L"--db", database, L"--table", L"TBL_RESTORE_LOG", L"--limit", L"0"}, 0,
                  "TBL_RESTORE_LOG: 1 of 1 rows");
    EXPECT_EQ(one.find("TBL_CFW_LOG"), std::string::npos);
    ExpectRun(kBackEnd, {L"log-pool", L"--db", database, L"--table", L"TBL_CFW_LOG"}, 0,
              "  192.0.2.17                               2001:db8::1  ");
    for (const auto& [uid, line] : {std::pair(kFullAgent, "LOG: 1 of 1 rows"), std::pair(kBareAgent, "LOG: 0 of 0")}) {
        ExpectRun(kBackEnd, {L"log-pool", L"--db", database, L"--table", L"TBL_RESTORE_LOG", L"--uid", uid}, 0, line);
    }
    SetEnvironmentVariableW(L"WRB_STORE", L"elsewhere.db");  // the option goes before it, and it before the default
    ExpectRun(kBackEnd, {L"agents", L"--db", database}, 0, "3f2a6c10-");
    ExpectRun(kBackEnd, {L"agents"}, 1, "elsewhere.db: there is no such file");
    SetEnvironmentVariableW(L"WRB_STORE", nullptr);
    ExpectRun(kBackEnd, {L"log-pool", L"--db", database, L"--table", L"agent"}, 2);
    ExpectRun(kBackEnd, {L"events", L"--db", database + L"x"}, 1);
}

// 500 rows may wait, 500 be in a transaction, and each of the 64 pipes hold one that has not been read.
TEST(BackRecords, AKilledServiceHasStoredAllRowsButThoseThatWaited) {
    BackEnd backEnd;
    const std::string message = LogMessage(kSendCfwLog, kCfwRow);
    std::atomic<int64_t> sent = 0;
    OnThreads(5, [&](unsigned thread) {
        if (thread == 0) {
            while (sent < 2000) {
                Sleep(1);
            }
            backEnd.Kill();
            return;
        }
        for (CPipeClient client; client.Initial(kLogPoolPipe); client.Close()) {
            uint64_t count = message.size();
            sent += client.Send(message.data(), count) ? 1 : 0;
        }
    });
    const auto db = OpenStore(backEnd.Database());
    const int64_t stored = db->NumberOf("SELECT count(*) FROM TBL_CFW_LOG");
    EXPECT_LE(stored, sent);
    EXPECT_GE(stored + 500 + 500 + 64, sent);
    EXPECT_EQ(db->NumberOf("SELECT max(id) FROM TBL_CFW_LOG"), stored) << "no gap";
    VerifyStore(*db, backEnd.Database());
}

// Serves in this process: its counters say when a message has been seen.
class Records : public testing::Test {
  protected:
    void Start(int64_t keep = 0) {
        CreateStore(Database());
        const auto note = [this](const std::wstring& text) {
            const std::scoped_lock guard(m_lock);
            m_notes += text + L'\n';
        };
        m_server = std::make_unique<RecordServer>(RecordServerOptions{Database(), keep, note});
        ASSERT_EQ(m_server->Start(), nullptr) << GetLastError();
    }
    std::wstring Database() const { return (m_folder / L"records.db").wstring(); }

    TempFolder m_folder;
    std::mutex m_lock;
    std::wstring m_notes;
    std::unique_ptr<RecordServer> m_server;
};

TEST_F(Records, OnlyWholeAndRightMessagesBecomeRows) {
    Start();
    const std::pair<const wchar_t*, std::string> kGood[] = {
        {kLogPoolPipe, LogMessage(kSendCfwLog, kCfwRow)},
        {kLogPoolPipe, LogMessage(kSendRestoreLog, kRestoreRow)},
        {kLogPoolPipe,
         LogMessage(kSendRestoreLog, Replaced(kRestoreRow, R"("u")", '"' + std::string(4096, 'u') + '"'))},
        {kQmAgentPipe, AgentText(L"CMDHQM_SEND_FIREWALL_LOG\tu\t1706745599\tl\tr\t1\t2\t3\t4\t5\t0\tpath\tin\tfo")},
        {kQmAgentPipe, AgentText(L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t4294967295")},
        {kWrbServerPipe, BytesOf(CMsgSerializer(kWrbSpywareLogEvent) << 2)},
    };
    std::vector<std::pair<const wchar_t*, std::string>> bad = {
        {kLogPoolPipe, LogMessage(kSendCfwLog, kCfwRow)},  // in a file, says a byte
        {kLogPoolPipe, LogMessage(kSendCfwLog, kRestoreRow)},
        {kLogPoolPipe, LogMessage(kSendCfwLog, std::string(20'000, '['))},
        {kLogPoolPipe, LogMessage(kSendCfwLog, Replaced(kCfwRow, "p\\ti", std::string(4097, 'p')))},
        {kLogPoolPipe, LogMessage(L"CMDLOGV2_ERASE", kCfwRow)},
        {kQmAgentPipe, AgentText(L"CMDHQM_ERASE\t1")},
        {kQmAgentPipe, AgentText(L"")},
        {kWrbServerPipe, LogMessage(L"WC_ERASE", "")},
        {kWrbServerPipe, LogMessage(kSendCfwLog, kCfwRow)},
    };
    bad[0].second[16] = 2;
    for (const wchar_t* rest : {L"", L"\t1x", L"\t-1", L"\t4294967296"}) {
        bad.emplace_back(kQmAgentPipe, AgentText(std::wstring(L"CMDHQM_EVENT_RTS_STATUS_CHANGE") + rest));
    }
    for (const auto& [time, port] : {std::pair(L"1", L"x"), {L"1", L"65536"}, {L"1", L"-1"}, {L"-1", L"5"}}) {
        bad.emplace_back(
            kQmAgentPipe,
            AgentText(FormatWide(L"CMDHQM_SEND_FIREWALL_LOG\tu\t%s\tl\tr\t1\t2\t3\t4\t%s\t0\tpath\tinfo", time, port)));
    }
    for (const auto& [pipe, bytes] : kGood) {
        SendBytes(pipe, bytes);
        for (std::size_t length = 1; length < bytes.size(); length += 1 + bytes.size() / 64) {
            bad.emplace_back(pipe, bytes.substr(0, length));
        }
        bad.emplace_back(pipe, bytes + "xx");
        bad.emplace_back(pipe, bytes + std::string(70'000, 'x'));
    }
    // A part of the row and what takes its place, "-" for nothing.
    std::istringstream wrongRows(R"("VER":3 "VER":4  "VER":3 "VER":"3"  "VER":3 "VER":18446744073709551619
        "VER":3 "VER":3//3  TBL_CFW_LOG agent  CfwLogField CfwLog  {"TBL" {"TBLX"  {"TBL" {"X":0,"TBL"
        "COL":{ "COL":[[[[[[[[[[[{  "UID":"u" "UID":1  "UID":"u", -  23:59:59 23:59  C0000211 C000021z
        C0000211 C00002110  "PORT":65535 "PORT":65536  "PORT":65535 "PORT":-1  "TYPE":0 "TYPE":0.5
        "TYPE":0 "TYPE":1e300  "TYPE":0 "TYPE":null  "TYPE":0, -  "TYPE":0 "TYPE":0,"X":0
        "TYPE":0 "TYPE":0,"TYPE":0  "TYPE":0 "TYPE":[0])");
    for (std::string part, by; wrongRows >> part >> by;) {
        bad.emplace_back(kLogPoolPipe, LogMessage(kSendCfwLog, Replaced(kCfwRow, part, by == "-" ? "" : by)));
    }
    for (const auto& [pipe, bytes] : bad) {
        SendBytes(pipe, bytes);
    }
    SendBytes(kLogPoolPipe, LogMessage(kSendCfwLog, kCfwRow));  // it still serves
    m_server->Stop();
    EXPECT_EQ(CounterOf(*m_server), "7 stored, " + std::to_string(bad.size()) + " refused, 0 lost")
        << WideToUtf8(m_notes);
    EXPECT_NE(m_notes.find(L"log pool: refused a message of process"), std::wstring::npos);
    EXPECT_NE(m_notes.find(L"\"PORT\" is not a whole number from 0 to 65535"), std::wstring::npos);
    EXPECT_EQ(OpenStore(Database())->NumberOf("SELECT max(length(UID)) FROM TBL_RESTORE_LOG"), 36);
}

TEST_F(Records, NothingThatWasTakenIsLostAcrossAStopAndALockedFile) {
    Start(500);
    const std::string message = LogMessage(kSendCfwLog, kCfwRow);
    std::atomic<int> taken = 0;
    const auto waitFor = [&taken](int count) {
        while (taken < count) {
            Sleep(1);
        }
    };
    const auto lock = OpenStore(Database());
    lock->Execute("BEGIN IMMEDIATE");  // as another program may, for a while
    OnThreads(5, [&](unsigned thread) {
        if (thread == 0) {
            waitFor(400);
            lock->Execute("COMMIT");
            waitFor(1500);
            m_server->Stop();  // in the middle of it
            return;
        }
        for (CPipeClient client; client.Initial(kLogPoolPipe); client.Close()) {
            uint64_t count = message.size();
            taken += client.Send(message.data(), count) ? 1 : 0;
        }
    });
    EXPECT_EQ(CounterOf(*m_server), std::to_string(taken) + " stored, 0 refused, 0 lost") << WideToUtf8(m_notes);
    EXPECT_EQ(lock->NumberOf("SELECT count(*) FROM TBL_CFW_LOG"), 500);
    EXPECT_EQ(lock->NumberOf("SELECT max(id) FROM TBL_CFW_LOG"), taken);
}

}  // namespace
}  // namespace wrb::test
