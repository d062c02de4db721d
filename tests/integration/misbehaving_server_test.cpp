// A database server that misbehaves, and messages of any bytes: what a client of the library gets, what the log says,
// and that the next command works.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "DbAllScanRecord.h"
#include "FakeDbService.h"
#include "GuardedBytes.h"
#include "MsgSerializer.h"
#include "UniqueName.h"
#include "cmdhl.h"

namespace wrb::test {
namespace {

constexpr wchar_t kUid[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
constexpr wchar_t kOne[] = L"CMDHL_GET_PS_CFG";
constexpr wchar_t kAll[] = L"CMDHL_GET_ALL_SCAN_CFG";
constexpr wchar_t kAllAnswer[] = L"DBV2_CLIENT_GET_ALL_SCAN_CFG";
constexpr std::size_t kMegabyte = 1u << 20;
constexpr DWORD kInTimeMilliseconds = 5000;

// An answer of always the same bytes.
std::string Serialized(const wchar_t* name, const ISerializable& record) {
    CMsgSerializer message(name);
    const std::size_t header = message.GetSize();
    message << record;
    return MessageBytes(name,
                        std::string(reinterpret_cast<const char*>(message.Data()), message.GetSize()).substr(header));
}

// Texts of an odd number of characters: every value begins at a multiple of 4 behind the first.
std::string AllScanAnswer() {
    tagClnAllScanCfg record;
    record.hasConfig = true;
    for (tagScanGroupValues& scan : record.scans) {
        scan.flags = 0x41;
        scan.extList = L".386,.COM";
        scan.moveDir = L"\\moved.";
        scan.custAction = L"CVE_Exploit-2-5";
    }
    return Serialized(kAllAnswer, record);
}

// What a sound server answers.
std::string GoodAnswer(const tagDbRequest& request) {
    if (request.Name() == kAllAnswer) {
        return AllScanAnswer();
    }
    if (request.Name() == L"DBV2_CLIENT_GET_ALL_SCAN_EX") {
        const tagClnAllScanCfgEx lists;
        return Serialized(L"DBV2_CLIENT_GET_ALL_SCAN_EX", lists);
    }
    return WideBytes(request.Name() == L"DB_GET_EXTRA" ? L".EXE\t\\moved\t\t\tUniverse-5-4"
                                                       : L"65\t2\t3\t4\t1\t12\t30\t0\t28\t7\t4\t3");
}

class CMisbehavingServer : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }

    // The answer to the client, which has to come in time.
    static std::wstring Ask(const wchar_t* command, const std::wstring& parameter = kUid) {
        const std::wstring name = UniqueName(L"reply");
        const CFakePipeService reply(name);
        CCmdProtocol message;
        message << command << name << parameter;
        TakeCapturedLog();
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(cmdhl_Process(message.Text().data(), message.Text().size() * sizeof(wchar_t)), 1u);
        const auto received = reply.WaitFor(1);
        EXPECT_LT(GetTickCount64() - start, kInTimeMilliseconds);
        return received.size() == 1 ? received[0].Text() : L"not one answer";
    }

    static bool Logged(const std::wstring& part, uint32_t level = 0) {
        const std::vector<tagCapturedLine> lines = TakeCapturedLog();
        return std::ranges::any_of(lines, [&](const tagCapturedLine& line) {
            return line.text.find(part) != std::wstring::npos && (level == 0 || line.level == level);
        });
    }
};

// A server that closes the connection unread: its pipe has no room for a request, so that the client sees it.
class CDeafServer {
  public:
    CDeafServer()
        : m_pipe(CreateNamedPipeW(L"\\\\.\\pipe\\DbServerNamePipe", PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE, 1, 0, 4, 0,
                                  nullptr)),
          m_thread([this] {
              ConnectNamedPipe(m_pipe.Get(), nullptr);
              m_pipe.Reset();
          }) {}
    ~CDeafServer() { m_thread.join(); }

  private:
    CFileHandle m_pipe;
    std::thread m_thread;
};

TEST_F(CMisbehavingServer, AnAbsentOneAndOneThatClosesUnreadAreAnEmptyAnswerAndALine) {
    EXPECT_EQ(Ask(kOne), L"");
    EXPECT_TRUE(Logged(L"SendAndRecv - Initial pipe client failed with win32 error code [2]"));
    EXPECT_EQ(Ask(kAll), L"");
    EXPECT_TRUE(Logged(L"[dbSend] Initial pipe client failed! err=2"));
    for (const wchar_t* command : {kOne, kAll}) {
        const CDeafServer server;
        EXPECT_EQ(Ask(command), L"");
        EXPECT_TRUE(Logged(L"SendDbApiHeader - fail to send DB API header"));
    }
    const CFakeDbService server(GoodAnswer);
    EXPECT_NE(Ask(kOne), L"");
}

// A sound answer made unsound by one rule.
struct tagMisdeed {
    const wchar_t* command;
    std::string (*answer)(const std::string& good);
    const wchar_t* part;    // of the client's answer; null: the sound one, empty: no byte
    const wchar_t* logged;  // part of a log line; null where none is promised
};

const tagMisdeed kMisdeeds[] = {
    {kOne, [](const std::string&) { return std::string(); }, L"", L"DB_GET_PSCF - empty answer"},
    {kOne, [](const std::string& good) { return Sleep(1000), good; }, nullptr, nullptr},
    {kOne, [](const std::string&) { return WideBytes(L"a\tb\t-\t0x9\t\xD800"); }, L"\nCompressedLayer=0\n", nullptr},
    {kOne, [](const std::string&) { return WideBytes(std::wstring(kMegabyte, L'9') + L"\t7\t8"); },
     L"\nCompressedLayer=7\n", nullptr},
    {kOne, [](const std::string& good) { return good + WideBytes(std::wstring(kMegabyte, L'x')); }, nullptr, nullptr},
    {kOne, [](const std::string&) { return std::string(kMegabyte, '\0'); }, L"=0\n", nullptr},
    {kAll, [](const std::string&) { return std::string(); }, L"",
     L"dbSendAndRecv - empty answer to DBV2_CLIENT_GET_ALL_SCAN_CFG"},
    {kAll, [](const std::string& good) { return Sleep(1000), good; }, nullptr, nullptr},
    {kAll, [](const std::string& good) { return good + std::string(kMegabyte, 'x'); }, nullptr, nullptr},
    {kAll, [](const std::string&) { return WideBytes(std::wstring(kMegabyte / 2, L'x')); }, L"", L"Out of range"},
};

TEST_F(CMisbehavingServer, EachMisdeedGivesItsAnswerAndTheNextCommandWorks) {
    const tagMisdeed* misdeed = nullptr;
    const CFakeDbService server([&](const tagDbRequest& request) {
        const std::string good = GoodAnswer(request);
        return misdeed == nullptr || request.Name() == L"DB_GET_EXTRA" ? good : misdeed->answer(good);
    });
    const std::wstring good[] = {Ask(kOne), Ask(kAll)};
    ASSERT_TRUE(good[0].starts_with(L"[Prescheduled Scan Configuration]\n"));
    ASSERT_TRUE(good[1].starts_with(L"[Manual Scan Configuration]\n"));
    for (const tagMisdeed& row : kMisdeeds) {
        SCOPED_TRACE(&row - kMisdeeds);
        const std::wstring& sound = good[row.command == kAll];
        misdeed = &row;
        const std::wstring answer = Ask(row.command);
        EXPECT_TRUE(row.logged == nullptr || Logged(row.logged));
        misdeed = nullptr;
        if (row.part == nullptr || *row.part == L'\0') {
            EXPECT_EQ(answer, row.part == nullptr ? sound : L"");
        } else {
            EXPECT_NE(answer.find(row.part), std::wstring::npos) << testing::PrintToString(answer);
        }
        EXPECT_EQ(Ask(row.command), sound);
    }
}

// Whatever a server makes of a serialized answer, the client gets the settings or an empty answer with its reason.
TEST_F(CMisbehavingServer, ASerializedAnswerCutOrChangedAnywhere) {
    const std::string sound = AllScanAnswer();
    const std::size_t body = MessageBytes(kAllAnswer, "").size();
    std::string sent = sound;
    const CFakeDbService server(
        [&](const tagDbRequest& request) { return request.Name() == kAllAnswer ? sent : GoodAnswer(request); });
    for (std::size_t length = 1; length < sound.size(); length += 7) {
        sent = sound.substr(0, length);
        EXPECT_EQ(Ask(kAll), L"") << length;
        EXPECT_TRUE(Logged(L"", 'E')) << length;
    }
    int refused = 0;
    for (std::size_t offset = 0; offset + 4 <= sound.size(); offset += offset < body ? 2 : 4) {
        for (const uint32_t word : {0u, 0x7FFFFFFEu, 0xFFFFFFFFu}) {
            sent = sound;
            std::memcpy(sent.data() + offset, &word, sizeof word);
            const bool noConfig = offset == body + 4 && word == 0;
            const std::wstring answer = Ask(kAll);
            refused += answer.empty();
            EXPECT_TRUE(answer.empty() || answer.starts_with(L"[Manual Scan Configuration]\n")) << offset;
            EXPECT_TRUE(!answer.empty() || Logged(L"", 'E') || noConfig) << offset << " " << word;
        }
    }
    EXPECT_GT(refused, 12 * 2) << "the lengths of texts at least";
}

// A message whose last byte is the last that may be read.
unsigned Process(const std::wstring& text, std::size_t present, unsigned long long bytes) {
    const CGuardedBytes message(text.c_str(), present);
    return cmdhl_Process(reinterpret_cast<const wchar_t*>(message.Start()), bytes);
}

TEST_F(CMisbehavingServer, SizesOfMessages) {
    const std::wstring echo =
        L"CMDHL_ECHO";  // 20 bytes, 22 with the terminator, which belongs to a text only when it is measured
    const struct {
        unsigned long long bytes;
        std::size_t present;
        unsigned result;
    } kSizes[] = {{0, 20, 0},           {14, 14, 0},         {15, 16, 0},         {18, 18, 0},    {20, 20, 1},
                  {21, 22, 1},          {22, 22, 0},         {0xFFFFFFFF, 22, 1}, {~0ull, 22, 1}, {0x100000014, 20, 1},
                  {0x100000000, 20, 0}, {0x80000000, 20, 0}, {0xFFFFFFFE, 22, 0}};
    for (const auto& [bytes, present, result] : kSizes) {
        EXPECT_EQ(Process(echo, present, bytes), result) << bytes;
    }
    EXPECT_EQ(cmdhl_Process(nullptr, 100), 0u);
    EXPECT_EQ(cmdhl_Process(nullptr, 0xFFFFFFFF), 0u);
}

TEST_F(CMisbehavingServer, AnyTextIsEchoedUpToItsTab) {
    using namespace std::string_literals;
    const std::wstring texts[] = {L"",      L"\xD800\xDC00\xDC00\xD800"s,      L"\xFFFF\xFEFF\r\n%s%n"s, L"a\0b"s,
                                  L"a\tb"s, std::wstring(kMegabyte, L'\xDFFF')};
    for (const std::wstring& text : texts) {
        EXPECT_TRUE(Ask(L"CMDHL_ECHO", text) == text.substr(0, text.find(L'\t'))) << text.size();
    }
}

// Pieces that commands are made of, put together by chance. The result is 1 for the commands that are built.
TEST_F(CMisbehavingServer, MessagesOfAnyPieces) {
    const CFakeDbService server(GoodAnswer);
    constexpr wchar_t kList[] = L"CMDHL_GET_SPY_RESTORE_LIST";
    const std::wstring nul(1, L'\0');
    const std::wstring name(300, L'y');
    const std::wstring huge(kMegabyte / 8, L'z');
    const std::wstring pieces[] = {L"CMDHL_ECHO", kOne, kAll,    kList,       L"CMDHL_", kUid,    L"\t", L"\t", L"\t",
                                   L"\xD800",     nul,  L"..\\", L"\\pipe\\", L"-1",     L"%s%n", L" ",  name,  huge};
    std::mt19937 random(20240601);
    unsigned ran = 0;
    for (int round = 0; round < 2000; ++round) {
        std::wstring text = pieces[random() % 5];
        for (unsigned count = random() % 8; count > 0; --count) {
            text += random() % 4 != 0 ? pieces[random() % std::size(pieces)]
                                      : std::wstring(1, static_cast<wchar_t>(random() & 0xFFFF));
        }
        const bool known = std::find(pieces, pieces + 4, text.substr(0, text.find(L'\t'))) != pieces + 4;
        const std::size_t bytes = text.size() * sizeof(wchar_t);
        EXPECT_EQ(Process(text, bytes, bytes), known ? 1u : 0u) << testing::PrintToString(text.substr(0, 200));
        ran += known;
    }
    EXPECT_GT(ran, 200u);
    EXPECT_NE(Ask(kOne), L"");
}

}  // namespace
}  // namespace wrb::test
