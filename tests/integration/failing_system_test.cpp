// Each call of the system that a command makes fails once: what the client gets, and that the next command works.
#include <windows.h>

#include "Ask.h"
#include "CabinetBuilder.h"
#include "CapturedLog.h"
#include "DbBundle.h"
#include "FailedCalls.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "MsgSerializer.h"
#include "PfwLogSample.h"
#include "ServerHome.h"

namespace wrb::test {
namespace {

constexpr wchar_t kUid[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";

const std::vector<std::string> kCalls = {
    "ConnectNamedPipe", "CreateEventW",     "CreateFileW", "CreateNamedPipeW",        "CreateWaitableTimerW",
    "ReadFile",         "SetWaitableTimer", "WriteFile",   "SetNamedPipeHandleState", "WaitForMultipleObjects"};

// One command of each kind. A failure answers with nothing, with the part that got through, or as the row says. In the
// parameters "^" stands for the reply pipe, "~" for the agent, "@" for the folder for uploads.
constexpr struct {
    const wchar_t* command;
    const wchar_t* parameters;
    const wchar_t* failure;
} kCommands[] = {
    {L"CMDHL_ECHO", L"^\ttext", L""},                                 // quick
    {L"CMDHL_GET_MS_CFG", L"^\t", L""},                               // of the INI files
    {L"CMDHL_GET_MS_CFG", L"^\t~", L""},                              // two questions in text form
    {L"CMDHL_GET_NCIE_SETTING", L"^\t~", L""},                        // a serialized question
    {L"CMDHL_SET_SPY_RT_CFG", L"~\t1\t1\t1\t1", L""},                 // an update, which has no answer
    {L"CMDHL_PFW_SET_LOG", L"^\tuid\t@\\package\t@\\dir-\t1", L"0"},  // an upload
};

std::string AnswerOfDatabase(const DbRequest& request) {
    if (request.IsMessage()) {
        CSerializer record;
        record << tagClientNCIECfg({0x1, 1, 2, 3, 4});
        return MessageBytes(request.Name(), {reinterpret_cast<const char*>(record.Data()), record.GetSize()});
    }
    return WideBytes(request.Name() == L"DB_GET_EXTRA" ? L".EXE\t\\moved\t\t\tUniverse-5-4"
                                                       : L"65\t2\t3\t4\t1\t12\t30\t0\t28\t7\t4\t3");
}

class FailingSystem : public testing::Test {
  protected:
    FailingSystem() {
        std::filesystem::create_directory(m_upload);
        cmdhl_Initialize(L"", L"", nullptr);
    }
    ~FailingSystem() override { cmdhl_Finalize(); }

    // What is needed before the command runs, and is used up by it. The reply pipe holds the whole answer: a fake
    // service would bring a thread and a lock, which keep handles.
    void Prepare() {
        WriteAll(m_upload / L"package", m_package);
        m_reply.Reset();
        m_reply.Reset(CreateNamedPipeW((L"\\\\.\\pipe\\" + m_replyName).c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE,
                                       1, 0, 1u << 16, 0, nullptr));
        ASSERT_TRUE(m_reply) << GetLastError();
    }

    // The names of the updates that the database has got since the last call.
    std::wstring TakeUpdates() {
        OpenPipeForWriting(L"DbServerNamePipe");  // opens when all messages before it have been taken
        std::wstring names;
        const auto requests = m_database.WaitFor(0);
        for (; m_seen < requests.size(); ++m_seen) {
            if (!requests[m_seen].request.empty() && requests[m_seen].ReplyPipe().empty()) {
                names += requests[m_seen].Name() + L" ";
            }
        }
        return names;
    }

    // The answer that has come; empty when none has.
    std::wstring TakeAnswer() {
        std::string answer;
        char piece[1024];
        for (DWORD bytes = 0; ReadFile(m_reply.Get(), piece, sizeof piece, &bytes, nullptr);) {
            answer.append(piece, bytes);
        }
        return WideText(answer) + TakeUpdates();
    }

    const ServerHome m_home;
    const std::filesystem::path m_upload = m_home / L"Upload";
    const std::wstring m_replyName = UniqueName(L"reply");
    const SWRB_PFW_LOG_ITEM m_record = SampleRecord<SWRB_PFW_LOG_ITEM>();
    const std::string m_package =
        BuildCabinet({{"a.log", std::string(reinterpret_cast<const char*>(&m_record), sizeof m_record)}});
    const FakePipeService m_agent{L"QMAgentServerNamePipe"};
    const FakePipeService m_pool{L"Global\\LogPoolCommandManager"};
    const FakeDbService m_database{AnswerOfDatabase};
    std::size_t m_seen = 0;  // of the database's requests
    FileHandle m_reply;
};

TEST_F(FailingSystem, EachFailureGivesItsAnswerAndTheNextCommandWorks) {
    for (const auto& row : kCommands) {
        std::wstring message = row.command + std::wstring(L"\t") + row.parameters;
        for (const auto& [mark, text] : {std::pair(L'@', m_upload.wstring()), {L'^', m_replyName}, {L'~', kUid}}) {
            for (std::size_t at; (at = message.find(mark)) != std::wstring::npos;) {
                message.replace(at, 1, text);
            }
        }
        const auto run = [&] { Tell(message); };
        Prepare();
        run();
        const std::wstring good = TakeAnswer();
        ASSERT_NE(good, row.failure);
        Prepare();
        const unsigned failures = FailEachCall(kCalls, FailsOn::ThisThread, run, [&] {
            const std::wstring answer = TakeAnswer();
            EXPECT_TRUE(good.starts_with(answer) || answer == row.failure) << testing::PrintToString(answer);
            Prepare();
            run();
            EXPECT_EQ(TakeAnswer(), good);
            Prepare();
        });
        EXPECT_GE(failures, 4u);
        TakeCapturedLog();
    }
}

}  // namespace
}  // namespace wrb::test
