// The four entry points, over real pipes, the real counter block and the settings of a folder without any.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "BmPolicyCache.h"
#include "CmdProtocol.h"
#include "CounterSection.h"
#include "FakeLogService.h"
#include "FakePipeService.h"
#include "INICache.h"
#include "OSException.h"
#include "UniqueName.h"
#include "cmdhl.h"

namespace {

using wrb::test::CFakePipeService;
using wrb::test::UniqueName;

unsigned Process(const CCmdProtocol& message) {
    return cmdhl_Process(message.Text().data(), message.Text().size() * sizeof(wchar_t));
}

std::wstring Ask(const wchar_t* command, const wchar_t* parameter) {
    const std::wstring name = UniqueName(L"reply");
    const CFakePipeService reply(name);
    CCmdProtocol message;
    message << command << name << parameter;
    EXPECT_EQ(Process(message), 1u);
    const auto messages = reply.WaitFor(1);
    EXPECT_EQ(messages.size(), 1u);
    return messages.empty() ? L"no answer" : messages[0].Text();
}

class EntryPoints : public testing::Test {
  protected:
    void SetUp() override { EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr)); }
    void TearDown() override { EXPECT_FALSE(cmdhl_Finalize()); }

    wrb::test::CFakeLogService m_log;
};

TEST_F(EntryPoints, StartSaysWhereTheSettingsAre) {
    const auto lines = m_log.TakeLines();
    ASSERT_FALSE(lines.empty());
    const std::wstring_view text = lines[0].text;
    EXPECT_TRUE(text.starts_with(L"[CMDHL]["));
    EXPECT_NE(text.find(L"]cmdhl_Initialize - cmdhl_Initialize: ini home:["), text.npos);
    EXPECT_TRUE(text.ends_with(L"\\wrbscan.ini]"));
    EXPECT_EQ(lines[0].level, static_cast<uint32_t>('I'));
    EXPECT_EQ(lines[0].sourceFile, L"Server\\MasterService\\CmdHndlr\\libCmdHndlrClient\\cmdhl_Handler.cpp");
}

TEST_F(EntryPoints, EchoSendsTheContentBack) {
    for (const wchar_t* content : {L"hello", L"", L"gr\u00FC\u00DFe \u4F60\u597D", L"100% [%s]"}) {
        EXPECT_EQ(Ask(L"CMDHL_ECHO", content), content);
        EXPECT_EQ(m_log.TakeTexts().back(), L"content:[" + std::wstring(content) + L"]");
    }
    const std::wstring large(300'000, L'x');
    EXPECT_EQ(Ask(L"CMDHL_ECHO", large.c_str()), large);
}

TEST_F(EntryPoints, AnEchoThatNobodyTakesIsLogged) {
    m_log.TakeTexts();
    const std::wstring nobody = UniqueName(L"nobody");
    CCmdProtocol message;
    message << L"CMDHL_ECHO" << nobody << L"x";
    EXPECT_EQ(Process(message), 1u);
    EXPECT_EQ(m_log.TakeTexts(),
              (std::vector<std::wstring>{L"content:[x]", L"init pipe client [" + nobody + L"] failed! err=[2]",
                                         L"cmdhl_Echo - cmdhl_OutputCommand failed."}));
}

TEST_F(EntryPoints, SleepTakesLessThanThreeSeconds) {
    m_log.TakeTexts();
    CCmdProtocol message;
    message << L"CMDHL_SLEEP" << L"zzz";
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Process(message), 1u);
    EXPECT_LT(GetTickCount64() - start, 30'000u) << "three seconds, and a machine under load";
    EXPECT_EQ(m_log.TakeTexts(), std::vector<std::wstring>{L"content:[zzz]"});
}

// A value that is cached shows by being served after the file has changed.
TEST_F(EntryPoints, ClearIniCacheSparesTheSandboxAnalyzer) {
    m_log.TakeTexts();
    CINICache* const caches[] = {&ScanIniCache(), &ServerIniCache(), &SbaIniCache()};
    for (CINICache* cache : caches) {
        cache->readINIInt(L"Section", L"Key", 1);
    }
    EXPECT_EQ(cmdhl_Process(L"CMDHL_CLEAR_INI_CACHE", 42), 1u);
    const uint32_t expected[] = {2, 2, 1};  // a missing key: the default is cached, so a kept entry gives the first one
    for (std::size_t i = 0; i < std::size(caches); ++i) {
        EXPECT_EQ(caches[i]->readINIInt(L"Section", L"Key", 2), expected[i]) << i;
        caches[i]->clear();
    }
    EXPECT_EQ(m_log.TakeTexts(), std::vector<std::wstring>{L"cmdhl_ClearIniCache"});
}

TEST_F(EntryPoints, WhatIsNotACommandLeavesNoTrace) {
    m_log.TakeTexts();
    for (const wchar_t* text : {L"CMDHL_NO_SUCH_COMMAND\tpipe\tuid", L"CMDHL_GET_WTP_SETTING\tpipe\tuid",
                                L"cmdhl_echo\tpipe\tx", L"DB_GET_MSCF\tpipe", L""}) {
        EXPECT_EQ(cmdhl_Process(text, 0xFFFFFFFF), 0u);
    }
    EXPECT_TRUE(m_log.TakeTexts().empty());
}

TEST_F(EntryPoints, StartAndStopMayBeRepeated) {
    EXPECT_NE(g_pBmPolicyCache, nullptr);
    CBmPolicyCache* const first = g_pBmPolicyCache;
    EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr));
    EXPECT_NE(g_pBmPolicyCache, first) << "a second start reads the policies again";
    delete first;
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"once"), L"once");
    EXPECT_FALSE(cmdhl_ReloadDebugSetting(L"", L""));
    m_log.TakeTexts();
    EXPECT_FALSE(cmdhl_Finalize());
    EXPECT_EQ(g_pBmPolicyCache, nullptr);
    EXPECT_FALSE(cmdhl_Finalize());
    EXPECT_EQ(m_log.TakeTexts(), std::vector<std::wstring>(2, L"cmdhl_Finalize: Called"));
}

TEST_F(EntryPoints, AfterTheEndUncountedCommandsRunAndCountedOnesThrow) {
    cmdhl_Finalize();
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
    for (int i = 0; i < 3; ++i) {
        try {
            cmdhl_Process(L"CMDHL_GET_MS_CFG\tpipe\tuid", 0xFFFFFFFF);
            FAIL() << "nothing was thrown";
        } catch (const OS::CException& error) {
            EXPECT_EQ(error.GetCode(), static_cast<uint32_t>(E_FAIL));
        }
    }
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::CCounterReader reader;
    uint32_t error = 0;
    ASSERT_EQ(reader.Attach(error), wrb::CounterAttach::Attached) << error;
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(EntryPoints, AnswersOfManyThreadsGoToTheirOwnPipes) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i] {
            for (int round = 0; round < 25; ++round) {
                const std::wstring content = std::to_wstring(i) + L":" + std::to_wstring(round);
                EXPECT_EQ(Ask(L"CMDHL_ECHO", content.c_str()), content);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
