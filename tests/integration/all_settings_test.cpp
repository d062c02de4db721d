// All settings of an agent in one answer: the same text as its parts, and the changed bits that go with it.
#include <fstream>
#include <regex>

#include "Ask.h"
#include "BackEnd.h"
#include "DbAgent.h"
#include "INICache.h"
#include "cmdhm_Bundles.h"

namespace wrb::test {
namespace {

constexpr wchar_t kAll[] = L"CMDHL_GET_CLIENT_ALL_SETTING";
constexpr uint32_t kCleared = 0x1C507 | 0x20000 | 0x40000;
constexpr wchar_t kMarkedAgent[] = L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42";

// Null stands for the part without a command.
constexpr const wchar_t* kParts[] = {L"CMDHL_GET_ALL_SCAN_CFG",
                                     L"CMDHL_GET_WTP_SETTING",
                                     L"CMDHL_GET_FA_RESTORE_SETTING",
                                     L"CMDHL_GET_NCIE_SETTING",
                                     L"CMDHL_GET_SAMPLE_SUBMISSION_SETTING",
                                     L"CMDHL_GET_SABLEX_SETTING",
                                     nullptr,
                                     L"CMDHL_GET_SERVER_POLICY",
                                     L"CMDHL_GET_INI_SERVICESWITCHSETTING",
                                     L"CMDHL_GET_SCAN_METHOD",
                                     L"CMDHL_GET_INI_WHITELIST",
                                     L"CMDHL_GET_INI_VEXORSETTING",
                                     L"CMDHL_GET_INI_CRITICAL",
                                     L"CMDHL_GET_INI_COMPONENT_VER",
                                     L"CMDHL_GET_INI_GLOBALSETTING"};

// Protected texts differ each time.
std::wstring Comparable(const std::wstring& text) {
    return std::regex_replace(text, std::wregex(L"!CRYPT![^\n]*"), L"protected");
}

uint32_t ChangedBits(const wchar_t* uid) {
    uint32_t changed = 0;
    EXPECT_TRUE(dbGetConfFlagW(uid, changed, 0));
    return changed;
}

class AllSettings : public testing::Test {
  protected:
    void SetUp() override {
        cmdhl_Initialize(L"", L"", nullptr);
        const std::filesystem::path ini = m_folder / L"server.ini";
        std::ofstream(ini) << "[INI_SERVER_SECTION]\nStringProtectionKey=" << std::string(64, 'a') << "\n";
        ServerIniCache().clear();
        ServerIniCache().init(ini.wstring().c_str(), 6);
        ASSERT_TRUE(dbSetAllConfFlgW(0xFFFFFFFF, 0));
    }
    void TearDown() override { cmdhl_Finalize(); }

    BackEnd m_backEnd;
    TempFolder m_folder;
};

TEST_F(AllSettings, AreThePartsOfEveryAgentAndClearTheirBits) {
    const std::wstring threadAgent = ThreadAgent(0);
    const std::pair<const wchar_t*, uint32_t> agents[] = {
        {kFullAgent, kCleared}, {kMarkedAgent, kCleared}, {threadAgent.c_str(), kCleared}, {kBareAgent, 0x60000}};
    for (const auto& [uid, cleared] : agents) {
        SCOPED_TRACE(testing::Message() << std::wstring(uid));
        std::wstring parts;
        for (const wchar_t* const part : kParts) {
            if (part != nullptr) {
                parts += Ask(part, uid);
            } else {
                EXPECT_TRUE(cmdhm_GetAggrScanSetting(parts, uid));
            }
        }
        EXPECT_EQ(ChangedBits(uid), 0xFFFFFFFF);
        EXPECT_EQ(Comparable(Ask(kAll, uid)), Comparable(parts));
        EXPECT_EQ(ChangedBits(uid), 0xFFFFFFFF & ~cleared);
    }
    EXPECT_EQ(Ask(kAll, kUnknownAgent), L"");
    EXPECT_EQ(Ask(kAll, L""), L"");
}

// An asker that is there and has not read. `end` gets its pipe once a part of the answer is in it.
template <typename End>
void AskAndKeepUnread(End end) {
    const std::wstring name = UniqueName(L"reply");
    FileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_INBOUND,
                                     PIPE_TYPE_MESSAGE | PIPE_READMODE_BYTE, 1, 0, 1 << 20, 0, nullptr));
    std::thread command([&] { Tell(std::wstring(kAll) + L"\t" + name + L"\t" + kFullAgent); });
    ConnectNamedPipe(pipe.Get(), nullptr);
    for (DWORD available = 0; available == 0; Sleep(1)) {
        ASSERT_TRUE(PeekNamedPipe(pipe.Get(), nullptr, 0, nullptr, &available, nullptr));
    }
    end(pipe);
    pipe.Reset();
    command.join();
}

TEST_F(AllSettings, BitsStayUntilTheAnswerHasBeenRead) {
    AskAndKeepUnread([](const FileHandle&) {});  // and ends
    EXPECT_EQ(ChangedBits(kFullAgent), 0xFFFFFFFF);
    AskAndKeepUnread([](const FileHandle& pipe) {
        EXPECT_EQ(ChangedBits(kFullAgent), 0xFFFFFFFF);
        char bytes[4096];
        for (DWORD count = 0; ReadFile(pipe.Get(), bytes, sizeof bytes, &count, nullptr);) {
        }
    });
    EXPECT_EQ(ChangedBits(kFullAgent), 0xFFFFFFFF & ~kCleared);
}

// The asker never reads and never ends.
TEST_F(AllSettings, TheWaitForTheReaderEnds) {
    std::ofstream(m_folder / L"server.ini", std::ios::app) << "ReplyTimeoutSeconds=1\n";
    ServerIniCache().clear();
    const std::wstring name = UniqueName(L"reply");
    const FileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE, 1,
                                           0, 1 << 20, 0, nullptr));
    Tell(std::wstring(kAll) + L"\t" + name + L"\t" + kFullAgent);
    EXPECT_EQ(ChangedBits(kFullAgent), 0xFFFFFFFF);
}

}  // namespace
}  // namespace wrb::test
