// The four entry points, over real pipes, the real counter block and a home folder without settings.
#include <windows.h>

#include "Ask.h"
#include "BmPolicyCache.h"
#include "CounterSection.h"
#include "FakeLogService.h"
#include "INICache.h"
#include "OSException.h"

namespace {

class EntryPoints : public testing::Test {
  protected:
    void SetUp() override { EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr)); }
    void TearDown() override { EXPECT_FALSE(cmdhl_Finalize()); }

    wrb::test::CFakeLogService m_log;
};

// The default of a missing key is cached, so an entry that was kept gives the first default once more.
TEST_F(EntryPoints, ClearIniCacheSparesTheSandboxAnalyzer) {
    CINICache* const caches[] = {&ScanIniCache(), &ServerIniCache(), &SbaIniCache()};
    for (CINICache* cache : caches) {
        cache->readINIInt(L"Section", L"Key", 1);
    }
    EXPECT_EQ(cmdhl_Process(L"CMDHL_CLEAR_INI_CACHE", 42), 1u);
    const uint32_t expected[] = {2, 2, 1};
    for (std::size_t i = 0; i < std::size(caches); ++i) {
        EXPECT_EQ(caches[i]->readINIInt(L"Section", L"Key", 2), expected[i]) << i;
        caches[i]->clear();
    }
    EXPECT_EQ(m_log.TakeTexts().back(), L"cmdhl_ClearIniCache");
}

TEST_F(EntryPoints, WhatIsNotACommandLeavesNoTrace) {
    m_log.TakeTexts();
    for (const wchar_t* text : {L"CMDHL_NO_SUCH_COMMAND\tpipe\tuid", L"CMDHL_GET_SERVER_NAME\tpipe\tuid", L""}) {
        EXPECT_EQ(cmdhl_Process(text, 0xFFFFFFFF), 0u);
    }
    EXPECT_TRUE(m_log.TakeTexts().empty());
}

TEST_F(EntryPoints, StartAndStopMayBeRepeated) {
    CBmPolicyCache* const first = g_pBmPolicyCache;
    ASSERT_NE(first, nullptr);
    EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr));
    EXPECT_NE(g_pBmPolicyCache, first) << "a second start reads the policies again";
    delete first;
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"once"), L"once");
    EXPECT_FALSE(cmdhl_Finalize());
    EXPECT_EQ(g_pBmPolicyCache, nullptr);
}

TEST_F(EntryPoints, AfterTheEndUncountedCommandsRunAndCountedOnesThrow) {
    cmdhl_Finalize();
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
    try {
        cmdhl_Process(L"CMDHL_GET_MS_CFG\tpipe\tuid", 0xFFFFFFFF);
        FAIL() << "nothing was thrown";
    } catch (const OS::CException& error) {
        EXPECT_EQ(error.GetCode(), static_cast<uint32_t>(E_FAIL));
    }
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::CCounterReader reader;
    uint32_t error = 0;
    ASSERT_EQ(reader.Attach(error), wrb::CounterAttach::Attached) << error;
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

}  // namespace
