// Messages whose body travels in a file, to wrbback and back: real ones, and those that name a file they should not.
#include "BackEnd.h"
#include "DbFrame.h"
#include "DbTransport.h"
#include "DbVexor.h"
#include "FakePipeService.h"
#include "MsgSerializer.h"
#include "QmAgentClient.h"
#include "ServerHome.h"
#include "ServicePipes.h"
#include "Store.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"
#include "logcl_command.h"

namespace wrb::test {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kQuestion[] = L"DBV2_GET_VEXOR_CUSTOM_BM_CFG";
constexpr std::size_t kFlagsOffset = 16;

class BackLarge : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(m_spill); }
    void TearDown() override { EXPECT_TRUE(fs::is_empty(m_spill)) << "a file is left behind"; }

    // A message with that id, which says that the file of this path has its body.
    static std::string Naming(CMsgSerializer& message, const fs::path& path) {
        message << path.wstring();
        std::string bytes = BytesOf(message);
        bytes[kFlagsOffset] = 0x02;
        return bytes;
    }

    const ServerHome m_home;
    const fs::path m_spill = m_home / L"temp";
};

TEST_F(BackLarge, QuestionsAndAnswersOfSeveralMegabytesGoThroughFiles) {
    BackEnd backEnd;
    OpenStore(backEnd.Database())->Execute("UPDATE behaviour_policy SET policy_id = hex(zeroblob(600000))");
    CMsgSerializer message(kQuestion);
    message << std::wstring(kFullAgent) << std::wstring(2 << 20, L'x') << 1u;
    ASSERT_TRUE(message.InFileMode());
    ASSERT_EQ(dbSendAndRecv(message, L"back_large_test", 60), 1);
    CustomBmConfig answer;
    message >> answer;
    ASSERT_EQ(answer.policies.size(), 2u);
    EXPECT_EQ(answer.policies[1].policyId, std::wstring(1'200'000, L'0'));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_spill), {}), 1) << "the answer's file, until it has been read";
    message.Reset();
    EXPECT_NE(backEnd.Stop().find("1 reads, 0 writes, 0 refused, 0 failed"), std::string::npos);
}

TEST_F(BackLarge, RecordsInFilesAreStoredAndRefusedOnesLeaveNoFile) {
    BackEnd backEnd;
    const auto send = [](const wchar_t* pipe, const wchar_t* name, auto body) {
        CMsgSerializer message(name, CMsgSerializer::kInFile);
        message << body;
        ASSERT_TRUE(message.Finalize());
        SendBytes(pipe, BytesOf(message));
    };
    send(kWrbServerPipe, kWrbSpywareLogEvent, 5);
    send(kLogPoolPipe, kSendRestoreLog,
         std::wstring(LR"({"TBL":"TBL_RESTORE_LOG","COL":{"LOGID":"l","UID":"u","RECV_TIME":"2024-01-31 23:59:59",)"
                      LR"("LOG_TYPE":-1,"RESULT":1},"VER":3,"CATEGORY":"RestoreLogFieldInfo"})"));
    send(kLogPoolPipe, kSendRestoreLog, std::wstring(2 << 20, L'x'));
    send(kWrbServerPipe, L"WC_ERASE", 5);
    send(kQmAgentPipe, L"CMDHQM_EVENT_RTS_STATUS_CHANGE", 1);  // takes texts only
    send(kLogServicePipe, kLogWriteCommand, 1);                // texts only, too
    const std::string output = backEnd.Stop();
    EXPECT_NE(output.find("records: 2 stored, 3 refused, 0 lost;"), std::string::npos) << output;
    EXPECT_NE(output.find("1 refused, 0 lost"), std::string::npos) << output;
}

// Files of others stay; what lies where senders put theirs, under such a name, is taken for one of them and removed.
TEST_F(BackLarge, FilesThatAreNoneOfOursAreLeftAloneAndTheAskerHearsAtOnce) {
    BackEnd backEnd;
    CMsgSerializer sound(kQuestion);
    sound << std::wstring(kFullAgent);
    const fs::path foreignFolder = m_home / L"mst1.tmp";
    const fs::path broken = m_spill / L"mst3.tmp";
    WriteAll(foreignFolder, BytesOf(sound));
    WriteAll(broken, BytesOf(sound).substr(0, 100));

    for (const fs::path& file : {foreignFolder, broken}) {
        CMsgSerializer message(kQuestion);
        const FakePipeService asker(message.Id());
        SendBytes(kDbServerPipe, Framed(Naming(message, file)));
        const auto answers = asker.WaitFor(1);
        ASSERT_EQ(answers.size(), 1u) << file;
        EXPECT_EQ(answers[0].bytes, "") << file;
        CMsgSerializer event(kWrbSpywareLogEvent);
        SendBytes(kWrbServerPipe, Naming(event, file));
    }
    EXPECT_FALSE(fs::exists(broken));
    const std::string output = backEnd.Stop();
    EXPECT_NE(output.find("database: 0 reads, 0 writes, 2 refused"), std::string::npos) << output;
    EXPECT_NE(output.find("0 stored, 2 refused"), std::string::npos) << output;
    EXPECT_EQ(fs::file_size(foreignFolder), sound.GetSize());
}

}  // namespace
}  // namespace wrb::test
