// The log-upload ticket, over a clock set by hand and INI files in memory.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <sstream>

#include "CapturedLog.h"
#include "FakeProfile.h"
#include "LiveBoard.h"
#include "ManualClock.h"
#include "OnThreads.h"
#include "cmdhl_LogTicket.h"

namespace {

struct Stage {
    explicit Stage(wrb::LogTicket::Publisher publish = nullptr) : ticket{clock, scanIni, serverIni, publish} {}

    // "N=2 a:0 +61 b:3 -b:1": a setting by its initial, which holds at once; the client a asks and is told so many
    // seconds; time passes; the client is released, with that result. "@-3600": the calendar is set back.
    void Play(const std::string& script) {
        std::istringstream words(script);
        for (std::string word; words >> word;) {
            if (word[0] == '+') {
                clock.AdvanceSeconds(std::stoll(word));
            } else if (word[0] == '@') {
                clock.StepCalendar(std::stoll(word.substr(1)));
            } else if (word[1] == '=') {
                Set(word[0], word.substr(2));
            } else {
                const bool isRelease = word[0] == '-';
                const std::wstring uid(1, static_cast<wchar_t>(word[isRelease]));
                const int32_t result = isRelease ? int32_t{ticket.Release(uid)} : ticket.Request(uid);
                EXPECT_EQ(result, std::stoi(word.substr(isRelease + 2))) << word << " of " << script;
            }
        }
    }

    void Set(char initial, const std::string& value) {
        static const std::map<char, std::string> kKeys = {
            {'E', "Global Setting/EnablePFWLogUploadingTicket"},
            {'S', "INI_SERVER_SECTION/Command_Handler_Static_Thread_Number"},
            {'M', "INI_SERVER_SECTION/Command_Handler_Maxium_Thread_Number"},
            {'N', "LOG_TICKET_SECTION/NumberOfConcurrentLogUploadingClient"},
            {'X', "LOG_TICKET_SECTION/NumberOfMaxConcurrentLogUploadingClient"},
            {'R', "LOG_TICKET_SECTION/NumberOfMaxProcessingLogInSec"},
            {'W', "LOG_TICKET_SECTION/MaxWaitTime"},
            {'U', "LOG_TICKET_SECTION/MaxUploadTime"},
            {'C', "LOG_TICKET_SECTION/MinClearListFrequencyInSec"}};
        const bool isScanIni = initial == 'E' || initial == 'S' || initial == 'M';
        (isScanIni ? scanProfile : serverProfile).values[kKeys.at(initial)] = value;
        scanIni.clear();
        serverIni.clear();
    }

    ManualClock clock{0, 1'700'000'000};
    FakeProfile scanProfile;
    FakeProfile serverProfile;
    CINICache scanIni{clock, scanProfile};
    CINICache serverIni{clock, serverProfile};
    wrb::LogTicket ticket;
};

TEST(LogTicket, Decides) {
    for (const std::string script :
         {"E=0 a:0 a:0 a:0 -a:1",
          "E=-1 N=0 X=0 a:0",
          "E=2 N=0 X=0 a:0",
          "N=1 X=1 a:0 b:1 c:1 -a:0 c:0 -c:0 -b:1 -b:0",
          "N=1 X=3 a:0 b:0 c:0 d:1",               // two ahead of their time
          "N=0 X=9 R=1 W=99 a:0 b:0 a:1 b:2 b:0",  // who asks twice loses the place, never gets two
          "S=1 M=2 a:0 b:0 c:1",                   // the thread numbers are the defaults
          "M=1 N=9 X=9 a:0 b:1",
          "N=-1 a:0 b:0",                 // ... and the ceiling
          "S=1 M=2 a:0 S=9 M=9 b:0 c:1",  // read once
          "N=0 X=0 R=0 0:1 1:1 2:1 3:1 4:2 5:2 6:2 7:2 8:3 9:3 x:3",
          "N=0 X=0 R=1 W=2 a:1 b:2 c:2",
          "N=0 X=0 W=0 a:0 b:0",
          "N=0 X=0 R=1 a:1 b:2 a:3 b:3",  // the own place in the queue counts for nothing
          "N=1 X=1 a:0 +60 b:1 +1 b:0",   // cleaned when more than 60 seconds have passed
          "N=1 X=1 C=5 a:0 +59 b:1 +6 b:0",
          "N=1 X=1 U=3 C=0 a:0 +2 b:1 +1 b:0",
          "N=1 X=1 U=600 C=0 a:0 +1 U=60 b:0",               // longer than a slot can be
          "N=0 X=0 R=1 a:1 b:2 +61 c:2 d:3",                 // a is 60 seconds late and dropped, b is not
          "N=0 X=0 R=1 C=0 a:1 b:2 c:3 +1 W=1 d:1 W=9 e:4",  // c lies too far ahead
          "N=1 X=1 a:0 @-3600 b:1 +60 b:1 +1 b:0",           // no step of the calendar moves a place
          "N=1 X=1 C=0 a:0 @3600 b:1 +59 b:1 +1 b:0",
          "N=0 X=0 R=1 C=0 a:1 @-7200 b:2 @9999 c:3 +61 d:3"}) {
        Stage().Play("E=1 " + script);
    }
}

TEST(LogTicket, ShowsItsListsToOtherProcesses) {
    Stage stage([](const wrb::LiveUploads& uploads) { wrb::TheLiveBoard().Show(uploads); });
    stage.Play("E=1 N=2 X=2 R=1 U=30 a:0 b:0 c:1 d:2 +5 -a:0");
    const std::optional<wrb::LiveState> state = wrb::ReadLiveState();
    ASSERT_TRUE(state);
    const wrb::LiveUploads& uploads = state->uploads;
    EXPECT_EQ(uploads.changed, 1'700'000'005);
    EXPECT_EQ(uploads.uploading, 1u);
    EXPECT_EQ(uploads.waiting, 2u);
    EXPECT_STREQ(uploads.firstUploading[0].uid, L"b");
    EXPECT_EQ(uploads.firstUploading[0].until, 1'700'000'030);
    EXPECT_STREQ(uploads.firstWaiting[1].uid, L"d");
    EXPECT_EQ(uploads.firstWaiting[1].until, 1'700'000'002);
    EXPECT_STREQ(uploads.firstWaiting[2].uid, L"");
    wrb::LiveUploads endless;
    std::ranges::fill(endless.firstWaiting[49].uid, L'x');
    wrb::TheLiveBoard().Show(endless);
    EXPECT_EQ(std::wstring(wrb::ReadLiveState()->uploads.firstWaiting[49].uid).size(), 36u);
}

TEST(LogTicket, EightThousandWaitingClientsMeetTheCeiling) {
    Stage stage;
    stage.Play("E=1 N=0 X=0");
    for (int i = 0; i < 8000; ++i) {
        EXPECT_EQ(stage.ticket.Request(std::to_wstring(i)), std::min(1800, i / 4 + 1));
    }
    stage.Play("x:1800 X=1 y:1800");  // too long a wait to be admitted ahead of time
}

TEST(LogTicket, AListIsBoundedWhateverTheAgentsSend) {
    constexpr int32_t kMost = 65'536;
    Stage stage;
    stage.Play("E=1 M=-1 N=-1 X=-1 R=1 W=99999");
    const auto uid = [](int32_t client, const wchar_t* more) {  // 36 characters count
        return std::wstring(27, L'u') + std::to_wstring(100'000'000 + client) + more;
    };
    for (int32_t client = 0; client < 2 * kMost; ++client) {
        EXPECT_EQ(stage.ticket.Request(uid(client, L"more")), std::max(0, client - kMost + 1));
        TakeCapturedLog();
    }
    EXPECT_EQ(stage.ticket.Request(uid(kMost, L"")), kMost + 1) << "its place stays";
    stage.Play("a:99999 b:99999");
    EXPECT_TRUE(stage.ticket.Release(uid(kMost, L"less")));
    stage.Play("a:65536 b:99999");
}

// Nobody gets another's place: five are admitted, and the waiting times are those of a queue.
TEST(LogTicket, EightThreadsShareOneQueue) {
    constexpr unsigned kThreads = 8;
    constexpr std::size_t kClients = 100;
    Stage stage;
    stage.Play("E=1 N=5 X=5 R=1 W=9999");
    std::array<std::array<int32_t, kClients>, kThreads> told{};
    wrb::test::OnThreads(kThreads, [&](unsigned thread) {
        for (std::size_t i = 0; i < kClients; ++i) {
            told[thread][i] = stage.ticket.Request(std::to_wstring(thread) + L":" + std::to_wstring(i));
        }
    });
    std::map<int32_t, int> counts;
    for (const auto& waits : told) {
        for (const int32_t seconds : waits) {
            ++counts[seconds];
        }
    }
    std::map<int32_t, int> expected = {{0, 5}};
    for (int32_t seconds = 1; seconds <= 795; ++seconds) {
        expected[seconds] = 1;
    }
    EXPECT_EQ(counts, expected);
}

TEST(LogTicket, SaysWhatItDoes) {
    Stage stage;
    stage.Play("E=1 N=1 X=2 R=1");
    TakeCapturedLog();
    stage.Play("a:0 b:0 a:1 -a:1 -b:0 E=0 x:0");
    const std::wstring request = L"cmdhl_RequestToUploadPFWLog - ";
    const std::wstring ticket = request + L"[LogTicket] ";
    const std::wstring limits = ticket +
                                L"dwStaticThreadNum(20), dwMaxThreadNum(40), dwConcurrentUploadingNum(1), "
                                L"dwMaxConcurrentUploadingNum(2), ";
    const std::wstring now = L", current time(1700000000) ";
    const std::wstring release = L"cmdhl_RemoveClientFromLogUploadingList - [LogTicket] ";
    const std::wstring finish = release + L"upload log finish. try to remove client[";
    const std::vector<CapturedLine> expected = {
        {'D', request + L">>"},
        {'D', L"CleanList - >>"},
        {'D', L"CleanList - [LogTicket] Remove client(0)  <<"},
        {'D', L"CleanList - >>"},
        {'D', L"CleanList - [LogTicket] Remove client(0)  <<"},
        {'I', limits + L"uploadinglist(0), waitinglist(0)"},
        {'I', ticket + L"put the client into uploading list GUID(a)" + now + L"timeout(1700000060)"},
        {'D', request + L"<<"},
        {'D', request + L">>"},
        {'I', limits + L"uploadinglist(1), waitinglist(0)"},
        {'I', ticket + L"(upload prearation) put the client into uploading list GUID(b)" + now +
                  L"upload timeout(1700000060)"},
        {'D', request + L"<<"},
        {'D', request + L">>"},
        {'W', ticket + L"the client is in uploading list already, remove and put it into waiting list for "
                       L"log uploading slot occupied."},
        {'I', ticket + L"put the client into waiting list GUID(a)" + now + L"nWaitingTime(1)"},
        {'D', request + L"<<"},
        {'D', finish + L"a] from log uploading list"},
        {'D', release + L"error handling. find the cleint in waiting list! remove client[a] from log waiting list"},
        {'D', finish + L"b] from log uploading list"},
        {'D', release + L"find the cleint in uploading list! remove client[b] from log uploading list"},
        {'D', request + L">>"}};
    EXPECT_EQ(TakeCapturedLog(), expected);
}

}  // namespace
