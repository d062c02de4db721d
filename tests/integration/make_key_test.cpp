// wrbctl make-key, and what wrbhost says without a key.

#include <regex>

#include "ExpectRun.h"
#include "ServerHome.h"

namespace wrb::test {
namespace {

constexpr wchar_t kProgram[] = L"wrbctl.exe";
constexpr wchar_t kIni[] = L"Private\\wrbserver.ini";
constexpr char kNoKey[] = "Private\\wrbserver.ini has no protection key";

// The 64 digits; empty when the file has no such line.
std::string KeyIn(const std::filesystem::path& ini) {
    const std::string text = ReadAll(ini);
    std::smatch found;
    const std::regex line("\\[INI_SERVER_SECTION\\]\\s+(?:Other=1\\s+)?StringProtectionKey=([0-9a-f]{64})\\r?\\n");
    return std::regex_search(text, found, line) ? found[1].str() : "";
}

TEST(MakeKey, MakesOneAndKeepsIt) {
    const ServerHome home;
    ExpectRun(kProgram, {L"make-key"}, 0, "made a key in ");
    const std::string first = KeyIn(home / kIni);
    EXPECT_NE(first, "");
    ExpectRun(kProgram, {L"make-key"}, 1, "--force");
    EXPECT_EQ(KeyIn(home / kIni), first);
    ExpectRun(kProgram, {L"make-key", L"--force"}, 0);
    EXPECT_NE(KeyIn(home / kIni), "");
    EXPECT_NE(KeyIn(home / kIni), first);
}

TEST(MakeKey, WritesTheFileThatIsNamed) {
    const ServerHome home;
    home.Write(L"other.ini", "[INI_SERVER_SECTION]\r\nOther=1\r\n");
    const std::wstring ini = (home / L"other.ini").wstring();
    ExpectRun(kProgram, {L"make-key", L"--ini", ini}, 0);
    EXPECT_NE(KeyIn(ini), "") << ReadAll(ini);
    home.Write(L"other.ini", "[INI_SERVER_SECTION]\r\nStringProtectionKey=a mistake\r\n");
    ExpectRun(kProgram, {L"make-key", L"--ini", ini}, 1, "--force");
    ExpectRun(kProgram, {L"make-key", L"--ini", (home / L"no\\such\\folder.ini").wstring()}, 1, "cannot write ");
    ExpectRun(kProgram, {L"make-key", L"--key", L"x"}, 2);
}

TEST(MakeKey, TheHostMissesIt) {
    const ServerHome home;
    for (const bool hasKey : {false, true}) {
        const ChildProcess host(L"wrbhost.exe", {});
        ASSERT_TRUE(host.WaitForOutput("wrbhost: serving")) << host.Output();
        EXPECT_EQ(host.Output().find(kNoKey) == std::string::npos, hasKey) << host.Output();
        ExpectRun(L"wrbhost.exe", {L"--stop"}, 0);
        EXPECT_EQ(host.WaitForExit(), 0u);
        ExpectRun(kProgram, {L"make-key", L"--force"}, 0);
    }
}

}  // namespace
}  // namespace wrb::test
