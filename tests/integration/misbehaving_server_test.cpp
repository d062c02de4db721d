// A database server that misbehaves, and messages of any bytes: what a client of the library gets, what the log says,
// and that the next command works.

#include <algorithm>
#include <random>

#include "Ask.h"
#include "CapturedLog.h"
#include "DbAllScanRecord.h"
#include "FakeDbService.h"
#include "GuardedBytes.h"
#include "MsgSerializer.h"

namespace wrb::test {
namespace {

constexpr wchar_t kUid[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
constexpr wchar_t kOne[] = L"CMDHL_GET_PS_CFG";
constexpr wchar_t kAll[] = L"CMDHL_GET_ALL_SCAN_CFG";
constexpr wchar_t kAllAnswer[] = L"DBV2_CLIENT_GET_ALL_SCAN_CFG";
constexpr std::size_t kMegabyte = 1u << 20;

// An answer that holds the record.
std::string Serialized(const std::wstring& name, const ISerializable& record) {
    CSerializer body;
    body << record;
    return MessageBytes(name, {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
}

// What a sound server answers.
std::string GoodAnswer(const DbRequest& request) {
    if (request.Name() == kAllAnswer) {
        AllScanConfig record;
        record.hasConfig = true;
        return Serialized(kAllAnswer, record);
    }
    if (request.IsMessage()) {
        return Serialized(request.Name(), AllScanLists());
    }
    return WideBytes(request.Name() == L"DB_GET_EXTRA" ? L".EXE\t\\moved\t\t\tUniverse-5-4"
                                                       : L"65\t2\t3\t4\t1\t12\t30\t0\t28\t7\t4\t3");
}

class MisbehavingServer : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }

    // The answer to the client, and what it leaves in the log.
    static std::wstring AskAlone(const wchar_t* command, const std::wstring& parameter = kUid) {
        TakeCapturedLog();
        return Ask(command, parameter);
    }

    static bool Logged(const std::wstring& part) {
        return std::ranges::any_of(
            TakeCapturedLog(), [&](const CapturedLine& line) { return line.text.find(part) != std::wstring::npos; });
    }
};

// The pipe has no room for a request, so that the client sees it.
TEST_F(MisbehavingServer, OneThatClosesUnreadIsAnEmptyAnswerAndALine) {
    for (const wchar_t* command : {kOne, kAll}) {
        FileHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\DbServerNamePipe", PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE, 1, 0,
                                         4, 0, nullptr));
        std::thread server([&] {
            ConnectNamedPipe(pipe.Get(), nullptr);
            pipe.Reset();
        });
        EXPECT_EQ(AskAlone(command), L"");
        server.join();
        EXPECT_TRUE(Logged(L"SendDbApiHeader - fail to send DB API header"));
    }
    const FakeDbService server(GoodAnswer);
    EXPECT_NE(AskAlone(kOne), L"");
}

// A sound answer made unsound by one rule; faults_test.cpp has those that the back end itself can be switched to.
struct Misdeed {
    const wchar_t* command;
    std::string (*answer)(const std::string& good);
    const wchar_t* part;    // of the client's answer; null: the sound one, empty: no byte
    const wchar_t* logged;  // part of a log line; null where none is promised
};

const Misdeed kMisdeeds[] = {
    {kOne, [](const std::string&) { return WideBytes(L"a\tb\t-\t0x9\t\xD800"); }, L"\nCompressedLayer=0\n", nullptr},
    {kOne, [](const std::string&) { return WideBytes(std::wstring(kMegabyte, L'9') + L"\t7\t8"); },
     L"\nCompressedLayer=7\n", nullptr},
    {kOne, [](const std::string& good) { return good + WideBytes(std::wstring(kMegabyte, L'x')); }, nullptr, nullptr},
    {kOne, [](const std::string&) { return std::string(kMegabyte, '\0'); }, L"=0\n", nullptr},
    {kAll, [](const std::string& good) { return good + std::string(kMegabyte, 'x'); }, nullptr, nullptr},
    {kAll, [](const std::string&) { return WideBytes(std::wstring(kMegabyte / 2, L'x')); }, L"", L"Out of range"},
};

TEST_F(MisbehavingServer, EachMisdeedGivesItsAnswerAndTheNextCommandWorks) {
    const Misdeed* misdeed = nullptr;
    const FakeDbService server([&](const DbRequest& request) {
        const std::string good = GoodAnswer(request);
        return misdeed == nullptr || request.Name() == L"DB_GET_EXTRA" ? good : misdeed->answer(good);
    });
    const std::wstring good[] = {AskAlone(kOne), AskAlone(kAll)};
    ASSERT_TRUE(good[0].starts_with(L"[Prescheduled Scan Configuration]\n"));
    ASSERT_TRUE(good[1].starts_with(L"[Manual Scan Configuration]\n"));
    for (const Misdeed& row : kMisdeeds) {
        SCOPED_TRACE(&row - kMisdeeds);
        const std::wstring& sound = good[row.command == kAll];
        misdeed = &row;
        const std::wstring answer = AskAlone(row.command);
        EXPECT_TRUE(row.logged == nullptr || Logged(row.logged));
        misdeed = nullptr;
        const bool isPart = row.part != nullptr && *row.part != L'\0';
        EXPECT_TRUE(isPart ? answer.find(row.part) != answer.npos : answer == (row.part == nullptr ? sound : L""))
            << testing::PrintToString(answer);
        EXPECT_EQ(AskAlone(row.command), sound);
    }
}

TEST_F(MisbehavingServer, AnyTextIsEchoedUpToItsTab) {
    using namespace std::string_literals;
    for (const std::wstring& text : {L""s, L"\xD800\xDC00\xDC00\xD800"s, L"\xFFFF\xFEFF\r\n%s%n"s, L"a\0b"s, L"a\tb"s,
                                     std::wstring(kMegabyte, L'\xDFFF')}) {
        EXPECT_TRUE(AskAlone(L"CMDHL_ECHO", text) == text.substr(0, text.find(L'\t'))) << text.size();
    }
}

// Pieces that commands are made of, put together by chance. The result is 1 for the commands of the table.
TEST_F(MisbehavingServer, MessagesOfAnyPieces) {
    const FakeDbService server(GoodAnswer);
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
        const GuardedBytes message(text.data(), text.size() * sizeof(wchar_t));
        EXPECT_EQ(cmdhl_Process(reinterpret_cast<const wchar_t*>(message.Start()), text.size() * sizeof(wchar_t)),
                  unsigned{known})
            << testing::PrintToString(text.substr(0, 200));
        ran += known;
    }
    EXPECT_GT(ran, 200u);
    EXPECT_NE(AskAlone(kOne), L"");
}

}  // namespace
}  // namespace wrb::test
