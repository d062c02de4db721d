// wrbhost and wrbback as Windows services, and what stays of them when they crash.

#include <windows.h>

#include <filesystem>

#include "HostProcess.h"
#include "ServerHome.h"

namespace wrb::test {
namespace {

constexpr wchar_t kBack[] = L"wrbback.exe";

// `wrbhost service ...` and the like.
std::string Service(const wchar_t* program, const std::vector<std::wstring>& arguments, DWORD code,
                    const char* part = "") {
    std::vector<std::wstring> all{L"service"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return ExpectRun(program, all, code, part);
}

class Services : public testing::Test {
  protected:
    ~Services() override {
        for (const wchar_t* program : {kHost, kBack}) {
            const ChildProcess uninstall(program, {L"service", L"uninstall"});
            uninstall.WaitForExit();
        }
    }
    const ServerHome m_home;
};

TEST_F(Services, AreInstalledServeAndGo) {
    Service(kHost, {L"status"}, 3, "cannot see the service");
    Service(kBack, {L"install", L"--max-rows", L"77"}, 0,
            "WarrenbyBackEnd is installed for NT AUTHORITY\\LocalService");
    Service(kHost, {L"install", L"--workers", L"3"}, 0, "\" service run --workers 3");
    Service(kBack, {L"install"}, 0, "service run --max-rows 77");  // as it is
    Service(kHost, {L"stop"}, 3, "does not run");
    Service(kBack, {L"start"}, 0, "the service runs, process ");
    Service(kHost, {L"start"}, 0);
    Service(kBack, {L"status"}, 0, "state:   running");
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    EXPECT_TRUE(std::filesystem::exists(m_home / L"Data\\agents.db"));
    EXPECT_TRUE(std::filesystem::exists(m_home / L"Log\\wrbdebug.log"));
    EXPECT_TRUE(SendText(L"CMDHL_SLEEP\tx"));  // is finished before the service ends
    Service(kHost, {L"stop"}, 0, "has stopped");
    Service(kHost, {L"status"}, 3, "state:   stopped");
    Service(kBack, {L"stop"}, 0);
    Service(kHost, {L"uninstall"}, 0);
    Service(kHost, {L"uninstall"}, 3, "cannot uninstall the service: ");
    EXPECT_TRUE(std::filesystem::exists(m_home / L"Data\\agents.db"));
}

TEST_F(Services, SayWhyTheyDoNotServe) {
    const struct {
        const wchar_t* program;
        std::vector<std::wstring> options;
        void (*hinder)(const ServerHome& home);
        const char* reason;
    } kCases[] = {
        {kHost, {L"--dll", L"no_such.dll"}, nullptr, "the command library cannot be loaded (service-specific code 5)"},
        {kHost,
         {L"--allow", L"nobody of that name"},
         nullptr,
         "a setting or option is wrong (service-specific code 1)"},
        {kBack,
         {},
         [](const ServerHome& home) { std::filesystem::remove(home / L"Data\\agents.db"); },
         "the store cannot be opened (service-specific code 4)"},
    };
    Service(kBack, {L"install"}, 0);
    for (const auto& [program, options, hinder, reason] : kCases) {
        std::vector<std::wstring> install{L"install"};
        install.insert(install.end(), options.begin(), options.end());
        Service(program, install, 0);
        if (hinder != nullptr) {
            hinder(m_home);
        }
        Service(program, {L"start"}, 1, reason);
        Service(program, {L"status"}, 3, reason);
    }
    Service(kHost, {L"install", L"--no-such-option"}, 2, "no-such-option");
    Service(kHost, {L"run"}, 1, "only the service manager can run the service");
}

TEST_F(Services, DoNotStartBesideOneOnAConsole) {
    const Host host({});
    Service(kBack, {L"install"}, 0);
    Service(kHost, {L"install"}, 0);
    Service(kHost, {L"start"}, 1, "the program runs already (service-specific code 2)");
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
}

// Of eleven old dumps and the new one, ten stay.
TEST_F(Services, ACrashLeavesADump) {
    for (int i = 0; i < 11; ++i) {
        m_home.Write(L"Log\\Dumps\\old" + std::to_wstring(i) + L".dmp", "old");
    }
    for (const wchar_t* fault : {L"CMDHL_FAULT", L"CMDHL_ABORT"}) {
        const Host host({L"--dll", kLibrary});
        EXPECT_TRUE(SendText(fault + std::wstring(L"\tfield")));
        EXPECT_NE(host.WaitForExit().value_or(0), 0u);
        const std::string said = host.Output();
        EXPECT_NE(said.find(" in " + WideToUtf8(fault) + "; dump: "), std::string::npos) << said;
    }
    std::size_t dumps = 0;
    std::size_t written = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_home / L"Log\\Dumps")) {
        ++dumps;
        const std::string bytes = ReadAll(entry.path());
        // The signature, the version of the format, and the comment with the command's name.
        written +=
            bytes.starts_with("MDMP\x93\xA7") && bytes.find(std::string("C\0M\0D\0H\0L\0_\0", 12)) != std::string::npos;
    }
    EXPECT_EQ(dumps, 10u);
    EXPECT_EQ(written, 2u);
}

TEST_F(Services, TheHostNoticesThatTheBackEndGoesAndReturns) {
    const Host host({});
    EXPECT_TRUE(host.WaitForOutput("the database server does not run: nobody has its pipe DbServerNamePipe"));
    Service(kBack, {L"install"}, 0);
    Service(kBack, {L"start"}, 0);
    EXPECT_TRUE(host.WaitForOutput("the database server is back after "));
}

}  // namespace
}  // namespace wrb::test
