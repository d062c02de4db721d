// What one hostile, hung or starved neighbour can do to the host and its services.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "AccessOf.h"
#include "BackEnd.h"
#include "CabinetBuilder.h"
#include "CounterSection.h"
#include "HandlerCounterBlock.h"
#include "HostProcess.h"
#include "NamedMutex.h"
#include "OnThreads.h"
#include "PfwLogSample.h"
#include "ResourceUse.h"
#include "ServerHome.h"

namespace wrb::test {
namespace {

// The running host's counters.
std::string Status() {
    return ExpectRun(kHost, {L"--status"}, 0, "wrbhost: running; ");
}

void WaitForStatus(const std::string& part) {
    std::string status = Status();
    for (int i = 0; i < 1000 && status.find(part) == std::string::npos; ++i) {
        Sleep(10);
        status = Status();
    }
    EXPECT_NE(status.find(part), std::string::npos) << part << "; " << status;
}

// The server's own settings, which need no other service.
void ExpectSettings() {
    EXPECT_NE(Ask(L"CMDHL_GET_MS_CFG", L"").find(L"[Manual Scan Configuration]"), std::wstring::npos);
}

// Uploads and questions that hang take their share of the workers; what comes after them waits, and then is refused at
// once with the answer that failure has. Quick commands pass all along.
TEST(Hostile, HungCommandsLeaveAWorkerForQuickOnes) {
    const KernelHandle release(CreateEventW(nullptr, TRUE, FALSE, L"wrb_hostile_test_release"));
    const Host host({L"--dll", kLibrary, L"--workers", L"4", L"--queue", L"2"});
    for (int i = 0; i < 4; ++i) {  // two run, two wait
        EXPECT_TRUE(SendText(L"CMDHL_PFW_SET_LOG\tpipe\twaits"));
    }
    for (int i = 0; i < 3; ++i) {  // one runs, two wait
        EXPECT_TRUE(SendText(L"CMDHL_GET_MS_CFG\tpipe\twaits"));
    }
    WaitForStatus("waited 4, turned away 0");
    EXPECT_EQ(Ask(L"CMDHL_PFW_SET_LOG", L"waits"), L"0");
    EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", L"waits"), L"");
    EXPECT_TRUE(SendText(L"CMDHL_SET_MS_CFG\twaits"));
    EXPECT_TRUE(SendText(L"CMDHL_PFW_SET_LOG\tno such pipe\twaits"));
    EXPECT_TRUE(SendText(L"CMDHL_FINE"));
    WaitForStatus("handled 1, refused 0, threw 0, dropped 0, waited 4, turned away 4, unanswered 1, out of memory 0");
    SetEvent(release.Get());
    host.ExpectEnd(0, {"handled 8, ", "turned away 4, "});
}

// What waits when the stop has used half of its time is refused, and counted; what runs then ends with the host.
TEST(Hostile, AStopRefusesWhatItCannotRun) {
    const KernelHandle release(CreateEventW(nullptr, TRUE, FALSE, L"wrb_hostile_test_release"));
    const Host host({L"--dll", kLibrary, L"--workers", L"1"});
    EXPECT_TRUE(SendText(L"CMDHL_GET_MS_CFG\tpipe\twaits"));
    const std::wstring name = UniqueName(L"reply");
    const FakePipeService reply(name);
    EXPECT_TRUE(SendText(L"CMDHL_PFW_SET_LOG\t" + name + L"\tfirst"));
    WaitForStatus("waited 1");
    ExpectRun(kHost, {L"--stop", L"--timeout", L"2"}, 4, "turned away 1, ");
    EXPECT_EQ(host.WaitForExit(), 4u);
    const auto answers = reply.WaitFor(1);
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_EQ(answers[0].Text(), L"0");
}

// Every text of these programs would wait for ever. The pipe has room for one byte here, for a page elsewhere.
TEST(Hostile, AConsoleThatNobodyReadsStopsNoCommand) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    FileHandle reader;
    FileHandle writer;
    ASSERT_TRUE(CreatePipe(reader.Receive(), writer.Receive(), &inheritable, 1));
    const ChildProcess host(kHost, {L"--dll", kLibrary, L"--workers", L"1"}, writer.Get());
    for (int i = 0; i < 5000 && !SendText(L"CMDHL_FINE"); ++i) {
        Sleep(10);
    }
    for (int i = 0; i < 2000; ++i) {
        ASSERT_TRUE(SendText(L"CMDHL_INT"));
    }
    WaitForStatus("handled 1, refused 0, threw 2000, ");
    ExpectRun(kHost, {L"--stop", L"--timeout", L"20"}, 0);
    EXPECT_EQ(host.WaitForExit(), 0u);
}

TEST(Hostile, SilentConnectionsHoldNoWorker) {
    const Host host({L"--workers", L"1", L"--connections", L"40"});
    std::vector<FileHandle> silent;
    for (int i = 0; i < 30; ++i) {
        silent.push_back(OpenPipeForWriting(kHostPipe));
        EXPECT_TRUE(silent.back() && (i % 2 == 0 || WritePiece(silent.back(), "CMDHL")));
    }
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    silent.clear();
    host.ExpectEnd(0, {"handled 1, refused 15, threw 0, dropped 0, "});
}

// Twenty times the memory that long messages may take: they go through one after the other.
TEST(Hostile, LongMessagesShareTheMemory) {
    constexpr unsigned kThreads = 4;
    const Host host({L"--memory", L"1"});
    const std::wstring text = L"CMDHL_" + std::wstring(500'000, L'x');
    OnThreads(kThreads, [&](unsigned) {
        for (int i = 0; i < 5; ++i) {
            EXPECT_TRUE(SendText(text));
            EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
        }
    });
    host.ExpectEnd(0, {"handled 20, refused 20, threw 0, dropped 0, "});
}

// Wine keeps the access list of a pipe and does not check it: the list itself is looked at.
TEST(Hostile, ThePipeAdmitsTheNamedAccountsOnly) {
    const Host host({L"--allow", L"S-1-5-20", L"--allow", L"BUILTIN\\Guests"});
    const std::string access = AccessOfPipe(kHostPipe);
    for (const char* part : {";;;SY)", ";;;BA)", ";;;NS)", ";;;BG)"}) {
        EXPECT_NE(access.find(part), std::string::npos) << part << access;
    }
    for (const char* part : {";;;WD)", ";;;AU)", ";;;BU)", ";;;AN)"}) {
        EXPECT_EQ(access.find(part), std::string::npos) << part << access;
    }
    host.ExpectEnd(0, {"handled 0, "});
}

TEST(Hostile, WhoeverHoldsTheCountersMutexStopsNoCommand) {
    const Host host({});
    const KernelHandle mutex = OpenNamedMutex(kCounterMutexName);
    const NamedMutexLock lock(mutex.Get(), 10'000);
    ASSERT_TRUE(lock);
    for (int i = 0; i < 30; ++i) {
        ExpectSettings();
    }
    host.ExpectEnd(0, {"handled 30, "});
}

// There is one worker, so each answer has been tried when the last question is answered.
TEST(Hostile, AnAnswerToTheHostOrToAServiceIsRefusedHoweverTheNameIsSpelled) {
    const FakePipeService events(L"WrbServerNamePipe");
    const FakePipeService rows(L"Global\\LogPoolCommandManager");
    const FakePipeService database(L"DbServerNamePipe");
    const FakePipeService question(L"DbCln_4711");
    const FakePipeService message(L"0105DB_GET-17_4321_987");
    const Host host({L"--workers", L"1"});
    const std::wstring self = kHostPipe;
    for (const std::wstring& name :
         {self, L"x/..//" + self, self + L". ", std::wstring(L"CALLOWAY systems WRBY Command Handler Manager"),
          std::wstring(L"wrbservernamepipe"), std::wstring(L"x/../dbcln_4711"), std::wstring(L"0105DB_get-17_4321_987"),
          std::wstring(L"global/LogPoolCommandManager"), std::wstring(L"\\.\\DbServerNamePipe")}) {
        EXPECT_TRUE(SendText(L"CMDHL_ECHO\t" + name + L"\tforged"));
    }
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    host.ExpectEnd(0, {"handled 10, refused 0, "});
    for (const FakePipeService* service : {&events, &rows, &database, &question, &message}) {
        EXPECT_TRUE(service->WaitFor(0).empty());
    }
}

TEST(Hostile, ABackEndThatIsKilledLetsGoOfItsQuestions) {
    BackEnd backEnd({L"--allow-faults", L"--fault", L"DB_GET_MSCF:silence"});
    const Host host({L"--workers", L"1"});
    const std::jthread killer([&] {
        backEnd.WaitForFault();
        backEnd.Kill();
    });
    EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", kFullAgent), L"");
    ExpectSettings();
    host.ExpectEnd(0, {"handled 2, "});
}

// It takes one client and does not read what that one writes, or takes none.
TEST(Hostile, ALogServiceThatHangsStopsNoCommand) {
    for (const bool takesNoClient : {false, true}) {
        const FileHandle hung(CreateNamedPipeW(L"\\\\.\\pipe\\Log_ServerNamePipe", PIPE_ACCESS_INBOUND,
                                               PIPE_TYPE_MESSAGE, 1, 1024, 1024, NMPWAIT_WAIT_FOREVER, nullptr));
        const FileHandle client = takesNoClient ? OpenPipeForWriting(L"Log_ServerNamePipe") : FileHandle();
        const Host host({L"--workers", L"2"});
        for (int i = 0; i < 30; ++i) {
            ExpectSettings();
        }
        host.ExpectEnd(0, {"handled 30, "});
    }
}

// One pipe is taken by a client that does not write, the other is not read. Two answers may wait for such peers; the
// other workers give up at once, again and again.
TEST(Hostile, UnreadAnswersLeaveWorkersForOthers) {
    const ServerHome home;
    home.Write(L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\r\nSlowReplies=2\r\n");
    FileHandle pipes[2];
    const std::wstring names[] = {UniqueName(L"busy"), UniqueName(L"unread")};
    for (int i = 0; i < 2; ++i) {
        pipes[i].Reset(CreateNamedPipeW((L"\\\\.\\pipe\\" + names[i]).c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE,
                                        1, 1024, 1024, NMPWAIT_WAIT_FOREVER, nullptr));
    }
    FileHandle silent = OpenPipeForWriting(names[0]);
    const Host host({L"--workers", L"4"});
    const std::wstring text(5'000, L'x');
    for (int i = 0; i < 200; ++i) {
        EXPECT_TRUE(SendText(L"CMDHL_ECHO\t" + names[i % 2] + L"\t" + text));
    }
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    for (FileHandle* handle : {&pipes[0], &pipes[1], &silent}) {
        handle->Reset();
    }
    host.ExpectEnd(0, {"handled 201, "});
}

// The fields of a firewall upload after the reply pipe.
std::wstring FirewallUpload(const std::wstring& package, const std::filesystem::path& base) {
    return L"uid\t" + package + L"\t" + base.wstring() + L"\t1";
}

// An agent's firewall log, which the host takes.
void UploadRecords(const ServerHome& home, unsigned count) {
    const std::string record = BytesOf(SampleRecord<SWRB_PFW_LOG_ITEM>());
    std::string records;
    for (unsigned i = 0; i < count; ++i) {
        records += record;
    }
    home.Write(L"Upload\\package", BuildCabinet({{"a.log", records}}));
    const std::wstring fields = FirewallUpload(home / L"Upload\\package", home / L"Upload\\dir-");
    EXPECT_EQ(Ask(L"CMDHL_PFW_SET_LOG", fields.c_str()), L"1");
}

// Whoever may send a command reaches the folders for uploads, and nothing else.
TEST(Hostile, UploadsReachTheirFoldersOnly) {
    const ServerHome home;
    const std::filesystem::path settings = home / L"Private\\wrbserver.ini";
    const std::filesystem::path package = home / L"Upload\\package";
    home.Write(L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\r\nUploadFolders=*\r\n");
    home.Write(L"Upload\\package", "no cabinet");
    const std::wstring pipe = UniqueName(L"package");
    const FakePipeService sender(pipe);
    const Host host({});
    const auto upload = [&](const std::wstring& name, const wchar_t* base) {
        EXPECT_EQ(Ask(L"CMDHL_PFW_SET_LOG", FirewallUpload(name, home / base).c_str()), L"0");
    };
    for (const std::wstring& name : {L"\\\\.\\pipe\\" + pipe, L"\\\\127.0.0.1\\pipe\\" + pipe, settings.wstring(),
                                     (home / L"Upload\\..\\Private\\wrbserver.ini").wstring()}) {
        upload(name, L"Upload\\dir-");
    }
    upload(package, L"Private\\dir-");
    EXPECT_TRUE(std::filesystem::exists(settings) && std::filesystem::exists(package));
    EXPECT_TRUE(sender.WaitFor(0).empty());
    upload(package, L"Upload\\dir-");
    host.ExpectEnd(0, {"handled 6, "});
    EXPECT_FALSE(std::filesystem::exists(package));
}

// One service hangs, the other is absent: the agent has its "1", the hung one is waited for once only, and the counters
// say what is lost.
TEST(Hostile, RecordsThatNoServiceTakesAreCounted) {
    const ServerHome home;
    home.Write(L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\r\nServiceTimeoutSeconds=1\r\n");
    const FakePipeService agent(L"QMAgentServerNamePipe");
    const FileHandle holder = OpenPipeForWriting(L"QMAgentServerNamePipe");
    ASSERT_TRUE(holder);
    const Host host({});
    CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), CounterAttach::Attached) << error;
    UploadRecords(home, 100);
    host.ExpectEnd(0, {"handled 1, "});
    EXPECT_EQ(counters.Undelivered().rows, 100u);
    EXPECT_EQ(counters.Undelivered().events, 100u);
}

// A service that is slow and not hung: the upload is cut short when the host stops, and every record is accounted for.
TEST(Hostile, AStopCutsAnUploadShortAndCountsTheRest) {
    constexpr unsigned kRecords = 20'000;
    const ServerHome home;
    const FakePipeService pool(kLogPoolPipe, [](const Received&) { Sleep(10); });
    const Host host({});
    CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), CounterAttach::Attached) << error;
    UploadRecords(home, kRecords);
    EXPECT_FALSE(pool.WaitFor(1).empty());
    host.ExpectEnd(0, {"handled 1, "});
    EXPECT_EQ(counters.Undelivered().rows + pool.WaitFor(0).size(), kRecords);
    EXPECT_GT(counters.Undelivered().rows, 0u);
    EXPECT_EQ(counters.Undelivered().events, kRecords) << "nobody takes them";
}

// Whoever has it open keeps the upload from being read, and no worker.
TEST(Hostile, AHeldPackageEndsItsUploadAtOnce) {
    const ServerHome home;
    home.Write(L"Upload\\package", BuildCabinet({{"a.log", BytesOf(SampleRecord<SWRB_PFW_LOG_ITEM>())}}));
    const std::filesystem::path package = home / L"Upload\\package";
    const std::wstring fields = FirewallUpload(package, home / L"Upload\\dir-");
    const Host host({L"--workers", L"1"});
    {
        const FileHandle held(CreateFileW(package.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(Ask(L"CMDHL_PFW_SET_LOG", fields.c_str()), L"0");
    }
    EXPECT_TRUE(std::filesystem::exists(package));
    EXPECT_EQ(Ask(L"CMDHL_PFW_SET_LOG", fields.c_str()), L"1");
    host.ExpectEnd(0, {"handled 2, "});
    EXPECT_FALSE(std::filesystem::exists(package));
}

// Uids of half a megabyte: the ticket's lists keep 36 characters of each.
TEST(Hostile, LongUidsAreNotKept) {
    const ServerHome home;
    home.Write(L"wrbscan.ini", "[Global Setting]\r\nEnablePFWLogUploadingTicket=1\r\n");
    const Host host({});
    const auto ask = [](int number) {
        const std::wstring uid = std::to_wstring(number) + std::wstring(250'000, L'u');
        EXPECT_TRUE(Ask(L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", uid.c_str()).starts_with(L"1\t"));
    };
    for (int i = 0; i < 20; ++i) {  // every worker has read one
        ask(i);
    }
    const std::size_t before = CurrentResourceUse(host.Handle()).committedBytes;
    for (int i = 20; i < 60; ++i) {
        ask(i);
    }
    EXPECT_LT(CurrentResourceUse(host.Handle()).committedBytes, before + (10u << 20)) << "of 20 MB";
    host.ExpectEnd(0, {"handled 60, "});
}

}  // namespace
}  // namespace wrb::test
