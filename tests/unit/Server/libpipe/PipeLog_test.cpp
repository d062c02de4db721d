// What the pipe server says in the debug log, as the log service gets it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeLogService.h"
#include "PipeServer.h"
#include "Text.h"
#include "UniqueName.h"

using testing::ElementsAre;
using wrb::test::UniqueName;

namespace {

class PipeLog : public testing::Test {
  protected:
    // Each line as "LEVEL text".
    std::vector<std::wstring> Lines() {
        std::vector<std::wstring> lines;
        for (const auto& line : m_log.TakeLines()) {
            const std::size_t program = line.text.find(L"][");
            const std::size_t text = line.text.find(L']', program + 2) + 1;
            EXPECT_TRUE(line.sourceFile.starts_with(L"Server\\libpipe\\server\\"));
            lines.push_back(wrb::FormatWide(L"%c %s", line.level, line.text.substr(text).c_str()));
        }
        return lines;
    }

    wrb::test::CFakeLogService m_log;
    const std::wstring m_name = UniqueName();
    CPipeServer m_server;
    std::string m_fetched;
};

TEST_F(PipeLog, ASuccessfulFetchSaysNothing) {
    ASSERT_TRUE(m_server.Initial(m_name.c_str(), 5u));
    EXPECT_TRUE(wrb::test::WritePiece(wrb::test::OpenPipeForWriting(m_name), "x"));
    EXPECT_TRUE(m_server.FetchCmd(m_fetched));
    EXPECT_THAT(Lines(), ElementsAre());
}

TEST_F(PipeLog, ATimeOutIsNamed) {
    ASSERT_TRUE(m_server.Initial(m_name.c_str(), 1u));
    EXPECT_FALSE(m_server.FetchCmd(m_fetched));
    EXPECT_THAT(Lines(), ElementsAre(L"W [CPipeServer::FetchCmd] User define object is signaled!"));
}

TEST_F(PipeLog, TheClientsProcessIdIsNoted) {
    ASSERT_TRUE(m_server.Initial(m_name.c_str(), nullptr));
    EXPECT_TRUE(wrb::test::OpenPipeForWriting(m_name));
    DWORD pid = 0;
    EXPECT_TRUE(m_server.FetchCmd(m_fetched, &pid));
    EXPECT_THAT(Lines(), ElementsAre(wrb::FormatWide(
                             L"D CPipeServer::DisconnectAndReconnect - The connected pipe client PID [%d]", pid)));
}

TEST_F(PipeLog, ANameThatIsTakenIsNamedAfterTheRetries) {
    CPipeServer holder;
    ASSERT_TRUE(holder.Initial(m_name.c_str(), nullptr));
    EXPECT_EQ(PipeSendAndRecvW("x", 1, m_name.c_str(), L"never asked", m_server, nullptr), 0);
    EXPECT_THAT(Lines(), ElementsAre(L"E [CPipeServer::Initial] Retry 5 times. Still Failed!",
                                     L"E [PipeSendAndRecvW] Initial pipe server failed!"));
}

TEST_F(PipeLog, ANameThatIsNoNameIsNamed) {
    EXPECT_FALSE(m_server.Initial(L"", nullptr));
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with(L"E [CPipeServer::Initial] CreateNamedPipe failed! err=")) << lines[0];
}

TEST_F(PipeLog, AnAbsentServiceIsNamed) {
    EXPECT_EQ(PipeSendAndRecvW("x", 1, m_name.c_str(), UniqueName().c_str(), m_server, nullptr), 0);
    EXPECT_THAT(Lines(), ElementsAre(L"E [PipeSendAndRecvW] Initial pipe client failed! err=2"));
}

// The timed form wants a timer; told to use an event instead, it cannot arm it and reads without a time-out.
TEST_F(PipeLog, ATimerThatCannotBeArmedIsNamedAndTheFetchGoesOn) {
    const wrb::CKernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(m_server.Initial(m_name.c_str(), 1u));
    ASSERT_TRUE(m_server.Initial(1, m_name.c_str(), nullptr, event.Get()));
    EXPECT_TRUE(wrb::test::OpenPipeForWriting(m_name));
    EXPECT_TRUE(m_server.FetchCmd(m_fetched));
    for (const std::wstring& line : Lines()) {
        EXPECT_TRUE(line.starts_with(L"W SetWaitableTimer failed (")) << line;
    }
}

}  // namespace
