// The frame of the answering commands, over real pipes and the real counter block.
#include "HandlerFrame.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "CmdProtocol.h"
#include "CounterSection.h"
#include "FakeLogService.h"
#include "FakePipeService.h"
#include "PerfMonMgr.h"
#include "UniqueName.h"

namespace {

using wrb::CommandSlot;

constexpr CommandSlot kSlot = CommandSlot::CMDHL_GET_CFG_PERMISSION;

std::wstring g_uid;
bool g_reset = true;

bool Answer(std::wstring& output, const wchar_t* uid, bool bResetCfgFlag) {
    g_uid = uid;
    g_reset = bResetCfgFlag;
    output = L"[Section]\nUID=" + g_uid + L"\n";
    return true;
}

bool NoAnswer(std::wstring&, const wchar_t*, bool) {
    return false;
}

bool Throw(std::wstring&, const wchar_t*, bool) {
    throw std::runtime_error("cannot go on");
}

constexpr wrb::tagAnswerFrame Frame(wrb::AnswerLogic logic, const wchar_t* replyFailedLine = nullptr) {
    return {kSlot, logic, L"test: uid:[%s]", L"test: output:[%s]", L"Server\\test.cpp", 77, replyFailedLine};
}

class HandlerFrame : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(CWrbyPerfMonMgr::Initialize()); }
    void TearDown() override { CWrbyPerfMonMgr::CloseSingleton(); }

    // What the frame did to the command's call count and to the calls in progress.
    static uint32_t Calls() { return Reader().Slot(static_cast<uint32_t>(kSlot)).calls; }
    static int32_t InProgress() { return Reader().CallsInProgress(); }

    static void Run(const wrb::tagAnswerFrame& frame, const std::wstring& replyPipe, const wchar_t* uid) {
        CCmdProtocol built;
        built << replyPipe << uid << L"more";
        CCmdProtocol message(built.Text().data(), static_cast<int64_t>(built.Text().size() * sizeof(wchar_t)));
        wrb::AnswerCommand(frame, message);
    }

    wrb::test::CFakeLogService m_log;

  private:
    static wrb::CCounterReader Reader() {
        wrb::CCounterReader reader;
        uint32_t error = 0;
        EXPECT_EQ(reader.Attach(error), wrb::CounterAttach::Attached) << error;
        return reader;
    }
};

TEST_F(HandlerFrame, LogsAnswersAndCounts) {
    const uint32_t before = Calls();
    const std::wstring name = wrb::test::UniqueName(L"reply");
    const wrb::test::CFakePipeService reply(name);
    Run(Frame(Answer), name, L"a-uid");

    const auto messages = reply.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].Text(), L"[Section]\nUID=a-uid\n");
    EXPECT_EQ(messages[0].bytes.size(), 20u * sizeof(wchar_t)) << "no terminator travels";
    EXPECT_EQ(g_uid, L"a-uid");
    EXPECT_FALSE(g_reset);
    EXPECT_EQ(Calls(), before + 1);
    EXPECT_EQ(InProgress(), 0);

    const auto lines = m_log.TakeLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].text.ends_with(L"]test: uid:[a-uid]"));
    EXPECT_TRUE(lines[1].text.ends_with(L"]test: output:[[Section]\nUID=a-uid\n]"));
    for (const auto& line : lines) {
        EXPECT_EQ(line.level, 8u);
        EXPECT_EQ(line.sourceFile, L"Server\\test.cpp");
        EXPECT_EQ(line.line, 77u);
    }
}

TEST_F(HandlerFrame, AReplyThatNobodyTakes) {
    const std::wstring failed = L"init pipe client [nobody] failed! err=[2]";
    Run(Frame(NoAnswer), L"nobody", L"u");
    EXPECT_EQ(m_log.TakeTexts(), (std::vector<std::wstring>{L"test: uid:[u]", L"test: output:[]", failed}));
    Run(Frame(NoAnswer, L"test - 100% failed."), L"nobody", L"u");
    const auto lines = m_log.TakeLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_TRUE(lines[2].text.ends_with(failed));
    EXPECT_EQ(lines[2].level, 5u);
    EXPECT_TRUE(lines[3].text.ends_with(L"]test - 100% failed."));
    EXPECT_EQ(lines[3].level, static_cast<uint32_t>('E'));
}

TEST_F(HandlerFrame, WhatTheLogicThrowsPassesAndLeavesNoCallBehind) {
    const uint32_t before = Calls();
    EXPECT_THROW(Run(Frame(Throw), L"unused", L"u"), std::runtime_error);
    EXPECT_EQ(Calls(), before + 1);
    EXPECT_EQ(InProgress(), 0);
}

}  // namespace
