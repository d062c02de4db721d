// Every row of the command table with fields of any kind, and those that ask the database under one that misbehaves.
#include <atomic>
#include <exception>
#include <map>
#include <thread>

#include "Ask.h"
#include "BackEnd.h"
#include "CommandCatalog.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "ResourceUse.h"
#include "ServicePipes.h"
#include "Text.h"

namespace wrb::test {
namespace {

constexpr std::size_t kMegabyte = 1u << 20;
constexpr uint32_t kHandlesThatVary = 5;  // of the pipes' own stock

std::wstring AnswerOf(const CommandEntry& entry, const std::wstring& fields) {
    SCOPED_TRACE(testing::Message() << entry.name << " " << testing::PrintToString(fields.substr(0, 40)));
    const std::wstring name = Utf8ToWide(entry.name);
    if (entry.Answers()) {
        const std::wstring answer = Ask(name.c_str(), fields);
        EXPECT_NE(answer, L"no answer");
        return answer;
    }
    Tell(name + L"\t" + fields);
    return L"";
}

// Alert texts come from files; the database is only told afterwards.
bool AsksTheDatabase(const CommandEntry& entry) {
    return entry.lane == CommandLane::Database && entry.Answers() && entry.name != "CMDHL_CMDHL_GET_CLN_ALERT_MSG";
}

std::wstring Repeated(const std::wstring& field, int times) {
    std::wstring fields = field;
    for (int i = 1; i < times; ++i) {
        fields += L"\t" + field;
    }
    return fields;
}

// What a command answers for an agent that nobody knows. Empty but for these.
bool IsAnswerToUnknown(const CommandEntry& entry, const std::wstring& answer) {
    return entry.name == "CMDHL_GET_PRODUCT_INFO"               ? answer.ends_with(L"\t0\t0")
           : entry.name == "CMDHL_GET_INI_SERVICESWITCHSETTING" ? answer.starts_with(L"[ServiceSwitch]\n")
           : entry.name == "CMDHL_GET_CFG_PERMISSION"           ? answer.empty() || answer == L"0"  // of no such group
           : entry.name == "CMDHL_SERVER_AUTH_SET_LOG"          ? answer == L"1"
                                                                : answer.empty();
}

class AllCommands : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override {
        EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
        cmdhl_Finalize();
    }
};

TEST_F(AllCommands, WithoutFields) {
    for (const CommandEntry& entry : CommandCatalog()) {
        SCOPED_TRACE(entry.name);
        try {
            Tell(Utf8ToWide(entry.name));
        } catch (const std::exception&) {  // three uploads need a reply pipe's name of some length
        }
    }
}

TEST_F(AllCommands, WithHostileFieldsForAServerThatWorks) {
    const BackEnd backEnd;
    const std::wstring sets[] = {Repeated(L"", 8),
                                 Repeated(std::wstring(L"a\0b", 3), 8),
                                 Repeated(L"\xD800\xDC00\xDC00\xD800%s%n", 8),
                                 Repeated(L"4294967296", 40),
                                 Repeated(L"-99999999999999999999", 40),
                                 Repeated(std::wstring(kMegabyte, L'x'), 2)};
    uint32_t handles = 0;
    for (int pass = 0; pass < 2; ++pass) {
        for (const CommandEntry& entry : CommandCatalog()) {
            for (const std::wstring& fields : sets) {
                const std::wstring answer = entry.name == "CMDHL_SLEEP" ? L"" : AnswerOf(entry, fields);
                EXPECT_TRUE(!AsksTheDatabase(entry) || fields[0] == L'\t' || IsAnswerToUnknown(entry, answer))
                    << entry.name << testing::PrintToString(answer.substr(0, 100));
            }
        }
        const uint32_t before = std::exchange(handles, CurrentResourceUse().handles);
        EXPECT_TRUE(pass == 0 || handles <= before + kHandlesThatVary) << before << " " << handles;
    }
}

// Takes every connection to the database server and closes it unread.
class ClosingService {
  public:
    ~ClosingService() {
        for (m_stop = true; !m_ended;) {
            OpenPipeForWriting(L"DbServerNamePipe");
        }
        m_thread.join();
    }

  private:
    void Serve() {
        while (!m_stop) {  // without room for a request, so that the client sees the end
            const FileHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\DbServerNamePipe", PIPE_ACCESS_INBOUND,
                                                   PIPE_TYPE_MESSAGE, 1, 0, 4, 0, nullptr));
            ConnectNamedPipe(pipe.Get(), nullptr);
        }
        m_ended = true;
    }

    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_ended{false};
    std::thread m_thread{[this] { Serve(); }};
};

void ExpectFailure(const CommandEntry& entry) {
    const std::wstring answer = AnswerOf(entry, std::wstring(kFullAgent) + L"\t1\t1");
    EXPECT_TRUE(!AsksTheDatabase(entry) || (entry.name == "CMDHL_GET_PRODUCT_INFO"
                                                ? IsAnswerToUnknown(entry, answer)
                                                : answer == (entry.failure == FailureAnswer::Zero ? L"0" : L"")))
        << entry.name << testing::PrintToString(answer);
}

void ExpectFailures() {
    uint32_t handles = 0;
    for (int pass = 0; pass < 2; ++pass) {
        for (const CommandEntry& entry : CommandCatalog()) {
            if (entry.name != "CMDHL_SLEEP") {
                ExpectFailure(entry);
            }
        }
        const uint32_t before = std::exchange(handles, CurrentResourceUse().handles);
        EXPECT_TRUE(pass == 0 || handles <= before + kHandlesThatVary) << before << " " << handles;
    }
}

TEST_F(AllCommands, ForAServerThatIsAbsent) {
    ExpectFailures();
}

TEST_F(AllCommands, ForAServerThatClosesAtOnce) {
    const ClosingService server;
    ExpectFailures();
}

TEST_F(AllCommands, WithGoodFields) {
    const BackEnd backEnd;
    const TempFolder folder;
    const std::filesystem::path ini = folder / L"server.ini";
    WriteAll(ini, "[INI_SERVER_SECTION]\nStringProtectionKey=" + std::string(64, 'a') + "\n");
    ServerIniCache().clear();
    ServerIniCache().init(ini.wstring().c_str(), 6);
    for (const CommandEntry& entry : CommandCatalog()) {
        EXPECT_TRUE(entry.name == "CMDHL_SLEEP" || !entry.Answers() ||
                    AnswerOf(entry, std::wstring(kFullAgent) + L"\t1\t1") != L"")
            << entry.name;
    }
}

// Commands that do not ask the database answer as they do without a server, however slow the services are that they
// write to.
TEST_F(AllCommands, ForServersThatAreSlowOrLie) {
    const std::wstring fields = std::wstring(kFullAgent) + L"\t1\t1";
    std::map<std::string_view, std::wstring> usual;
    for (const CommandEntry& entry : CommandCatalog()) {
        usual[entry.name] = AsksTheDatabase(entry) || entry.name == "CMDHL_SLEEP" ? L"" : AnswerOf(entry, fields);
    }
    const std::optional<std::string> answers[] = {
        std::nullopt, WideBytes(L"a\tb\t-\t0x9\t\xD800\t[x]\n"), std::string(kMegabyte, '\0') + WideBytes(L"x"),
        WideBytes(std::wstring(kMegabyte / 2, L'9')), MessageBytes(L"DBV2_OTHER", std::string(64, '\xFF'))};
    const std::optional<std::string>* answer = answers;
    const auto takeTime = [&](const Received&) { Sleep(*answer ? 0 : 100); };
    const FakePipeService logPool(kLogPoolPipe, takeTime);
    const FakePipeService qmAgent(kQmAgentPipe, takeTime);
    const FakePipeService commands(kWrbServerPipe, takeTime);
    const FakeDbService server([&](const DbRequest&) {
        takeTime({});
        return answer->value_or("");
    });
    for (; answer != std::end(answers); ++answer) {
        for (const CommandEntry& entry : CommandCatalog()) {
            const std::wstring text = entry.name == "CMDHL_SLEEP" ? L"" : AnswerOf(entry, fields);
            EXPECT_TRUE(AsksTheDatabase(entry) ? *answer || entry.name == "CMDHL_GET_INI_SERVICESWITCHSETTING" ||
                                                     IsAnswerToUnknown(entry, text)
                                               : text == usual[entry.name])
                << entry.name << testing::PrintToString(text);
        }
    }
}

}  // namespace
}  // namespace wrb::test
