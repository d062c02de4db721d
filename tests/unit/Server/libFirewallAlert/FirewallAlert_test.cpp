// Firewall alerts: the window, what an alert writes, and the texts of mails and events.
#include <gmock/gmock.h>

#include <mutex>

#include "AlertNotifier.h"
#include "CapturedLog.h"
#include "EventMessages.h"
#include "FakeProfile.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "MailFolder.h"
#include "MailText.h"
#include "ManualClock.h"
#include "OnThreads.h"
#include "ServerHome.h"
#include "Text.h"

namespace wrb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(AlertWindow, SumsSlideAndAThresholdShowsOnceAWindow) {
    ManualClock clock;
    AlertWindow window(clock);
    const struct {
        int64_t pass;
        AlertCounts counts;
        AlertLimits limits;
        AlertSums sums;
        unsigned reached;  // bits
    } kSteps[] = {
        {0, {4, 1, 5}, {100, {5, 0, 6}}, {1, {4, 1, 5}}, 0},
        {50, {1, 0, 1}, {100, {5, 0, 6}}, {2, {5, 1, 6}}, 0b101},
        {49, {9, 1, 10}, {100, {5, 3, 6}}, {3, {14, 2, 16}}, 0},  // the first report's last second
        {1, {0, 2, 2}, {100, {5, 3, 6}}, {3, {10, 3, 13}}, 0b010},
        {49, {0, 0, 0}, {100, {5, 3, 6}}, {4, {10, 3, 13}}, 0},
        {1, {0, 0, 0}, {100, {5, 3, 6}}, {4, {9, 3, 12}}, 0b101},
        {400, {UINT32_MAX, 0, 0}, {100, {UINT32_MAX, 3, 6}}, {1, {UINT32_MAX, 0, 0}}, 0b001},
        {0, {UINT32_MAX, 0, 0}, {100, {5, 3, 6}}, {2, {2ull * UINT32_MAX, 0, 0}}, 0},
        {9, {0, 0, 0}, {10, {5, 3, 6}}, {3, {2ull * UINT32_MAX, 0, 0}}, 0},
        {1, {5, 0, 0}, {10, {5, 3, 6}}, {2, {5, 0, 0}}, 0b001},  // a shorter window counts at once
    };
    for (const auto& step : kSteps) {
        SCOPED_TRACE(&step - kSteps);
        clock.AdvanceSeconds(step.pass);
        clock.StepCalendar(-1000);
        const AlertState state = window.Add(step.counts, step.limits);
        EXPECT_EQ(state.sums.reports, step.sums.reports);
        EXPECT_EQ(state.sums.counts, step.sums.counts);
        EXPECT_EQ(state.reached.to_ulong(), step.reached);
    }
}

struct Notifier : testing::Test {
    Notifier() { TakeCapturedLog(); }

    void Set(const char* key, const char* value) { m_profile.values[std::string("Firewall Alert/") + key] = value; }

    std::vector<std::string> Mails() const {
        std::vector<std::string> texts;
        for (const std::wstring& file : m_folder.Waiting()) {
            texts.push_back(m_folder.Read(file).value_or(""));
        }
        return texts;
    }

    ServerHome m_home;
    const MailFolder m_folder{HomeFolder()};
    FakeProfile m_profile;
    ManualClock m_clock{0, 1'700'000'000};
    CINICache m_ini{m_clock, m_profile};
    std::mutex m_lock;
    std::vector<AlertEvent> m_events;
    AlertNotifier m_notifier{L"caller", m_clock, m_ini, [this](const AlertEvent& event) {
                                 const std::lock_guard guard(m_lock);
                                 m_events.push_back(event);
                                 return 0u;
                             }};
};

TEST_F(Notifier, EightThreadsMakeOneEventAndOneMail) {
    Set("Enable", "1");
    Set("IntrusionThreshold", "4000");
    Set("TotalThreshold", "4000");
    Set("Mail", "1");
    Set("MailTo", " a@example.com;; no address ;b@example.com");
    OnThreads(8, [this](unsigned) {
        for (int i = 0; i < 1000; ++i) {
            m_notifier.Add({1, 0, 1}, L"20240131235959");
        }
    });
    ASSERT_EQ(m_events.size(), 1u);
    EXPECT_EQ(m_events[0].windowSeconds, L"3600");
    EXPECT_EQ(m_events[0].sums, L"intrusions 4000 (threshold 4000), total 4000 (threshold 4000)");
    EXPECT_EQ(m_events[0].timeStamp, L"2024-01-31 23:59:59");
    const std::vector<std::string> mails = Mails();
    ASSERT_EQ(mails.size(), 1u);
    for (const char* part :
         {"Date: Tue, 14 Nov 2023 22:13:20 +0000\r\n", "To: <a@example.com>,\r\n <b@example.com>\r\n",
          "  intrusions 4000 (threshold 4000), reached\r\n  firewall rules 0\r\n  total 4000",
          "time stamp 2024-01-31 23:59:59."}) {
        EXPECT_THAT(mails[0], HasSubstr(part));
    }
    EXPECT_THAT(TakeCapturedTexts(), IsEmpty());
}

TEST_F(Notifier, TheSettingsSayWhatIsWritten) {
    const struct {
        std::map<std::string, const char*> settings;
        std::size_t events;
        std::size_t mails;
        std::size_t lines;
    } kCases[] = {
        {{{"Enable", "0"}, {"Mail", "1"}, {"MailTo", "a@b"}}, 0, 0, 0},
        {{{"EventLog", "0"}}, 0, 0, 0},
        {{{"EventLog", "0"}, {"Mail", "1"}, {"MailTo", "a@b"}, {"MailFrom", "not one"}}, 0, 2, 0},
        {{{"Mail", "1"}, {"MailTo", "nobody; @b; a@; a\x01@b; a@b>, <c@d; \xE4@b"}}, 2, 0, 1},
        {{{"Mail", "1"}}, 2, 0, 1},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(&row - kCases);
        m_profile.values.clear();
        for (const auto& [key, value] : std::map<std::string, const char*>{
                 {"Enable", "1"}, {"IntrusionThreshold", "1"}, {"RuleThreshold", "1"}, {"WindowInSec", "100"}}) {
            Set(key.c_str(), row.settings.contains(key) ? row.settings.at(key) : value);
        }
        for (const auto& [key, value] : row.settings) {
            Set(key.c_str(), value);
        }
        m_ini.clear();
        m_clock.AdvanceSeconds(100);
        m_notifier.Add({1, 0, 0}, L"a time\r\nBcc: x@y");
        m_notifier.Add({0, 1, 0}, L"202401312359590");
        EXPECT_EQ(m_events.size(), row.events);
        for (const AlertEvent& event : std::exchange(m_events, {})) {
            EXPECT_EQ(event.timeStamp, L"(none)");
        }
        EXPECT_EQ(Mails().size(), row.mails);
        std::filesystem::remove_all(m_home / L"Temp");
        const std::vector<CapturedLine> lines = TakeCapturedLog();
        EXPECT_EQ(lines.size(), row.lines);
        for (const CapturedLine& line : lines) {
            EXPECT_EQ(line, (CapturedLine{'E',
                                          L"caller - no mail of firewall alerts: [Firewall Alert] MailTo has no "
                                          L"valid address"}));
        }
    }
}

TEST(MailText, NothingInjectsAHeader) {
    const std::wstring kHostile = L"a\r\nBcc: x@y\r\n\r\nbody =?UTF-8?Q?=0D=0A?= \x00E4\xD83D\xDE00\xD800 ";
    const Mail mail{"id-1",         0,        "from@example.com",
                    {"a@b", "c@d"}, kHostile, kHostile + L"\n.\n" + std::wstring(99, L'=')};
    const std::string text = MailText(mail);
    const std::size_t end = text.find("\r\n\r\n");
    const std::string head = text.substr(0, end + 2);
    EXPECT_EQ(head.substr(0, head.find("=?")),
              "Date: Thu, 01 Jan 1970 00:00:00 +0000\r\nFrom: <from@example.com>\r\nTo: <a@b>,\r\n <c@d>\r\nSubject: ");
    EXPECT_THAT(head, HasSubstr("=?UTF-8?Q?a=0D=0ABcc=3A_x=40y=0D=0A=0D=0Abody_?=\r\n =?UTF-8?Q?=3D=3FUTF=2D8=3FQ"));
    EXPECT_THAT(head, HasSubstr("=C3=A4=F0=9F=98=80"));
    EXPECT_THAT(head, HasSubstr("?=\r\nMessage-ID: <id-1@example.com>\r\nAuto-Submitted: auto-generated\r\n"));
    EXPECT_THAT(text.substr(end + 4), HasSubstr("\r\n.\r\n=3D=3D"));
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t line = text.find('\n', at);
        EXPECT_LE(std::min(line, text.size()) - at, 77u) << text.substr(at, 100);
        EXPECT_TRUE(line == text.npos || text[line - 1] == '\r') << at;
        at = line == text.npos ? text.size() : line + 1;
    }
    EXPECT_TRUE(std::ranges::all_of(text, [](char c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n'; }));
}

TEST(MailFolder, TheOldestFailedMailsGiveWay) {
    const TempFolder home;
    const MailFolder folder(home.Path() + L"\\");
    const auto name = [](int i) { return FormatWide(L"%012d-00000000-00000000-00000000", i); };
    ASSERT_EQ(folder.Store(name(0), "text"), 0u);
    const std::filesystem::path mails = home / L"Temp\\Mail";
    for (int i = 1; i < 1000; ++i) {
        WriteAll(mails / (name(i) + (i == 5 || i == 7 ? L".failed" : L".eml")), "");
    }
    const std::filesystem::path unfinished = home / L"Temp\\NewMail";
    const std::wstring stem = name(4321);
    const std::wstring foreign[] = {stem,
                                    stem + L".txt",
                                    stem + L"0.eml",
                                    L"0" + stem + L".failed",
                                    stem.substr(1) + L".eml",
                                    stem.substr(0, 38) + L"g.eml",
                                    L"a" + stem.substr(1) + L".failed",
                                    L"1.eml",
                                    L".eml",
                                    L"report.failed"};
    for (const std::wstring& file : foreign) {
        WriteAll(mails / file, "");
        WriteAll(unfinished / file, "");
    }
    std::filesystem::create_directory(mails / (stem + L".eml"));
    EXPECT_EQ(folder.Store(name(2000), "text"), 0u);
    EXPECT_FALSE(std::filesystem::exists(mails / (name(5) + L".failed")));
    EXPECT_EQ(folder.Store(name(2001), "text"), 0u);
    EXPECT_EQ(folder.Store(name(2002), "text"), uint32_t{ERROR_NOT_ENOUGH_QUOTA});
    EXPECT_EQ(folder.Waiting().size(), 1000u);
    EXPECT_EQ(folder.MarkFailed(name(0) + L".eml"), 0u);
    EXPECT_EQ(folder.Store(name(2002), "new"), 0u);
    EXPECT_EQ(folder.Read(name(2002) + L".eml"), "new");
    for (int i = 0; i < 150; ++i) {  // others have filled the folder
        WriteAll(mails / (name(3000 + i) + L".failed"), "");
    }
    EXPECT_EQ(folder.MarkFailed(name(1) + L".eml"), 0u);
    EXPECT_EQ(folder.Store(name(2003), "text"), 0u);
    EXPECT_FALSE(std::filesystem::exists(mails / (name(3000 + 98) + L".failed")));
    EXPECT_TRUE(std::filesystem::exists(mails / (name(3000 + 99) + L".failed")));
    WriteAll(mails / (name(2002) + L".eml"), std::string(MailFolder::kMostBytes + 1, 'x'));
    EXPECT_FALSE(folder.Read(name(2002) + L".eml"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(unfinished), {}), std::ssize(foreign));
    const std::filesystem::path half = unfinished / L"001700000000-0000002c-1a2b3c4d-0000000f.eml";
    EXPECT_EQ(half.stem().wstring().size(), MailFolder::NewName(1'700'000'000).size());
    WriteAll(half, "");
    folder.DeleteUnfinished();
    EXPECT_FALSE(std::filesystem::exists(half));
    for (const std::wstring& file : foreign) {
        EXPECT_TRUE(std::filesystem::exists(mails / file)) << WideToUtf8(file);
        EXPECT_TRUE(std::filesystem::exists(unfinished / file)) << WideToUtf8(file);
    }
    EXPECT_NE(MailFolder(L"").Store(name(2000), "text"), 0u);
    std::filesystem::remove_all(mails);
    WriteAll(mails, "no folder");
    TakeCapturedLog();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(folder.Store(name(3000 + i), "text"), uint32_t{ERROR_DIRECTORY});
    }
    EXPECT_THAT(folder.Waiting(), IsEmpty());
    EXPECT_EQ(TakeCapturedLog().at(0).level, 'W');
}

TEST(AlertEvent, AViewerFindsItsTextInTheLibrary) {
    const ModuleHandle module(
        LoadLibraryExW((ProgramFolder() + L"libCmdHndlrClient.dll").c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_TRUE(module);
    const DWORD_PTR texts[] = {reinterpret_cast<DWORD_PTR>(L"60"), reinterpret_cast<DWORD_PTR>(L"total 5"),
                               reinterpret_cast<DWORD_PTR>(L"(none)")};
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, module.Get(), WRB_EVENT_FIREWALL_ALERT,
                   0, text, 512, reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(texts)));
    EXPECT_STREQ(text,
                 L"Firewall alert. The agents' firewalls have reported within 60 seconds: total 5. The last report has "
                 L"the time stamp (none).\r\n");
    EXPECT_EQ(WriteAlertEvent({L"60", L"total 5", L"(none)"}), 0u);
}

}  // namespace
}  // namespace wrb::test
