// Faults that are switched on in the back end, seen by commands.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "Ask.h"
#include "BackEnd.h"
#include "CapturedLog.h"
#include "DbAgent.h"
#include "DbListing.h"
#include "FaultBoard.h"

namespace wrb::test {
namespace {

constexpr wchar_t kControl[] = L"wrbctl.exe";
constexpr wchar_t kAddress[] = L"192.0.2.17";

std::wstring Address() {
    return Ask(L"CMDHL_GET_IP_BY_UID", kFullAgent);
}

class Faults : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }
};

TEST_F(Faults, SpoilAnswersWhileTheyAreSwitchedOn) {
    BackEnd backEnd({L"--allow-faults", L"--fault", L"DB_GET_IP:close"});
    EXPECT_EQ(Address(), L"");
    const std::pair<const wchar_t*, std::vector<std::wstring>> kRules[] = {
        {L"DB_GET_IP:truncate", {L"192.0", L"192.0"}},
        {L"DB_GET_IP:delay=1ms:every=2", {kAddress, kAddress}},
        {L"DB_GET_IP:close:every=3", {kAddress, kAddress, L"", kAddress}},
    };
    for (const auto& [rule, answers] : kRules) {
        ExpectRun(kControl, {L"fault", rule}, 0, ", applied 0 times\n");
        for (const std::wstring& answer : answers) {
            EXPECT_EQ(Address(), answer) << std::wstring(rule);
        }
    }
    ExpectRun(kControl, {L"fault", L"--json"}, 0, "\"rule\" : \"DB_GET_IP:close:every=3\"");
    ExpectRun(kControl, {L"fault", L"--clear", L"*:garbage", L"DB_SET_CONF_FLAG:silence"}, 0, "FAULT *:garbage");
    EXPECT_EQ(Address().size(), 32u);
    ExpectRun(kControl, {L"status"}, 3, "FAULTS ARE ALLOWED, FAULT *:garbage");
    EXPECT_TRUE(dbSetConfFlagW(kBareAgent, 1, 0));
    ExpectRun(kControl, {L"fault", L"--clear"}, 0, "none is switched on");
    EXPECT_EQ(Address(), kAddress);
    EXPECT_EQ(Ask(L"CMDHL_IS_CONFIGFLAGSET", std::wstring(kBareAgent) + L"\t1"), L"0");
    EXPECT_NE(backEnd.Stop().find("FAULTS ARE ALLOWED"), std::string::npos);
}

// A question in text form and a serialized one.
TEST_F(Faults, EachGivesItsAnswerAndItsLineAndTheNextCommandWorks) {
    const BackEnd backEnd({L"--allow-faults"});
    constexpr wchar_t kOne[] = L"CMDHL_GET_PS_CFG";
    constexpr wchar_t kAll[] = L"CMDHL_GET_ALL_SCAN_CFG";
    const struct {
        const wchar_t* command;
        const wchar_t* rule;
        bool isSound;
        const wchar_t* logged;
    } kRows[] = {
        {kOne, L"DB_GET_PSCF:close", false, L"DB_GET_PSCF - empty answer"},
        {kOne, L"DB_GET_PSCF:delay=1s", true, nullptr},
        {kAll, L"DBV2_CLIENT_GET_ALL_SCAN_CFG:close", false,
         L"dbSendAndRecv - empty answer to DBV2_CLIENT_GET_ALL_SCAN_CFG"},
        {kAll, L"DBV2_CLIENT_GET_ALL_SCAN_CFG:delay=1s", true, nullptr},
        {kAll, L"DBV2_CLIENT_GET_ALL_SCAN_CFG:truncate", false, L"Out of range"},
        {kAll, L"DBV2_CLIENT_GET_ALL_SCAN_CFG:garbage", false, nullptr},
    };
    for (const auto& [command, rule, isSound, logged] : kRows) {
        SCOPED_TRACE(std::wstring(rule));
        const std::wstring sound = Ask(command, kFullAgent);
        EXPECT_GT(sound.size(), 100u);
        ExpectRun(kControl, {L"fault", rule}, 0);
        TakeCapturedLog();
        EXPECT_EQ(Ask(command, kFullAgent), isSound ? sound : L"");
        const std::vector<std::wstring> lines = TakeCapturedTexts();
        EXPECT_TRUE(
            logged == nullptr ||
            std::ranges::any_of(lines, [text = logged](const auto& line) { return line.find(text) != line.npos; }))
            << testing::PrintToString(lines);
        ExpectRun(kControl, {L"fault", L"--clear"}, 0);
        EXPECT_EQ(Ask(command, kFullAgent), sound);
    }
}

TEST_F(Faults, SilenceLastsUntilTheBackEndEnds) {
    BackEnd backEnd({L"--allow-faults", L"--fault", L"DB_GET_IP:silence"});
    std::wstring answer = L"old";
    std::thread asker([&] { answer = Address(); });
    backEnd.WaitForFault();
    backEnd.Stop();
    asker.join();
    EXPECT_EQ(answer, L"");
}

TEST_F(Faults, ListsHoldUpNoQuestion) {
    BackEnd backEnd({L"--allow-faults", L"--fault", L"DB_LIST_ROWS:delay=3600s"});
    constexpr unsigned kAskers = 20;
    std::atomic<unsigned> refused{0};
    std::vector<std::jthread> askers;
    for (unsigned i = 0; i < kAskers; ++i) {
        askers.emplace_back([&refused] {
            DbListing rows;
            refused += ReadDbListing({.table = L"agents"}, rows) ? 0 : 1;
            refused.notify_all();
        });
    }
    for (unsigned now = refused; now < kAskers - 16; now = refused) {
        refused.wait(now);
    }
    EXPECT_EQ(Address(), kAddress);
    backEnd.Stop();
    askers.clear();
    EXPECT_EQ(refused, kAskers - 1) << "at the stop the list that runs is given, and no other";
}

TEST_F(Faults, WhatIsRefused) {
    const struct {
        const wchar_t* rule;
        const char* output;
    } kRows[] = {
        {L"DB_GET_NOTHING:close", "\"DB_GET_NOTHING\": no command of the database server"},
        {L"DB_GET_IP", "\"\": no kind of fault; take delay=TIME, close, garbage"},
        {L"DB_GET_IP:delay", "\"\": not a time up to an hour"},
        {L"DB_GET_IP:delay=2h", "\"2h\": not a time"},
        {L"DB_GET_IP:delay=3601s", "\"3601s\": not a time"},
        {L"DB_GET_IP:close=1s", "\"close=1s\": only a delay has a time"},
        {L"DB_GET_IP:close:every=0", "\"every=0\": not every=N"},
        {L"DB_GET_IP:close:every=2x", "\"every=2x\": not every=N"},
        {L"DB_SET_CONF_FLAG:truncate", "a write can only be delayed and silenced"},
    };
    for (const auto& [rule, output] : kRows) {
        ExpectRun(kControl, {L"fault", rule}, 2, output);
    }
    FaultBoard foreign;
    std::memset(static_cast<void*>(&foreign), 'x', sizeof foreign);
    EXPECT_TRUE(foreign.Entries().empty());
    ExpectRun(kBackEnd, {L"serve", L"--fault", L"DB_GET_IP:close"}, 2, "--allow-faults");
    const BackEnd backEnd;
    ExpectRun(kControl, {L"fault", L"DB_GET_IP:close"}, 3, "started without --allow-faults");
    EXPECT_EQ(Address(), kAddress);
}

}  // namespace
}  // namespace wrb::test
