// wrbctl beside the running services: how they are, what agents get, what is changed.
#include "BackEnd.h"
#include "DbListing.h"
#include "HostProcess.h"
#include "ServerHome.h"

namespace wrb::test {
namespace {

constexpr wchar_t kCtl[] = L"wrbctl.exe";

struct Row {
    std::vector<std::wstring> arguments;
    DWORD code;
    std::vector<const char*> parts;  // of the output
};

void ExpectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const std::string output = ExpectRun(kCtl, row.arguments, row.code);
        for (const char* part : row.parts) {
            EXPECT_NE(output.find(part), output.npos) << part << "\n" << output;
        }
    }
}

TEST(Ctl, SaysThatTheEntryOfTheHomeFolderIsOfNoUse) {
    const ServerHome home;
    home.SpoilEntry();
    ExpectRun(kCtl, {L"status"}, 3, "the folder of this program; the registry value Local_Path is no text of 1 to 258");
}

TEST(Ctl, SeesExplainsAndChangesTheRunningServer) {
    const ServerHome home;
    home.Write(L"wrbscan.ini",
               "[Manual Scan Configuration]\r\nScanBot=0\r\nScanSpeed=7\r\n[Firewall "
               "Alert]\r\nMail=0\rSmtpPassword=secret\r\n");
    home.Write(L"Private\\wrbserver.ini",
               "[INI_SERVER_SECTION]\r\n; Pwd=secret\r\nX=odbc:A=b;P={secret}\r\nStringProtectionKey=12\r\n");
    home.Write(L"records.jsonl", "{\"time\":1700000000,\"port\":443}\n{\"time\":1700000001,\"port\":80}\n");
    home.Write(L"mix", "1 CMDHL_PFW_SET_POLICY_ID UID p1\n");
    home.Write(L"empty.jsonl", "");
    std::filesystem::create_directories(home / L"Upload");
    BackEnd backEnd;
    const Host host({L"--workers", L"3"});
    EXPECT_TRUE(
        backEnd.WaitForLog("the section [Manual Scan Configuration] of wrbscan.ini has the unknown key ScanBot"));
    const std::wstring uid = kFullAgent;
    const std::wstring other = L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42";
    ExpectRows({
        {{L"status"},
         0,
         {"ok       host", "echo in ", "ok       store", "Local_Path", "warning  Private\\wrbSbaSvr.ini",
          "not 64 hexadecimal digits", "ok       upload folder"}},
        {{L"status", L"--json"}, 0, {R"("health" : "warning")", R"("name" : "host")", R"("processId" : )"}},
        {{L"get", uid, L"MSCfg.OleLayer"}, 0, {"3\n"}},
        {{L"get", uid, L"manual scan configuration"}, 0, {"[Manual Scan Configuration]\nUID=3f2a", "\nMoveDir=\\m\n"}},
        {{L"get", L"--server", L"MSCfg.OleLayer", L"--json"}, 0, {R"("OleLayer" : "3")"}},
        {{L"get", kUnknownAgent}, 1, {"the database does not know the agent e5a9308d"}},
        {{L"get", kBareAgent, L"MSCfg"}, 1, {"[Manual Scan Configuration] cannot be read: the agent has no settings"}},
        {{L"get", uid, L"MSCfg.ScanBot"}, 2, {"has no key \"ScanBot\"; did you mean \"ScanBoot\"?"}},
        {{L"get", uid, L"Sablex_Setting"}, 2, {"no section \"Sablex_Setting\"; did you mean \"Sablex_Settings\"?"}},
        {{L"get"}, 2, {"usage: wrbctl get"}},
        {{L"explain", uid, L"MSCfg.ScanAllFiles"},
         0,
         {"ScanAllFiles = 1", "Scan all files: ", "switch, 0 or 1", "database bit: DB_GET_MSCF",
          "0x00000021 & 0x00000020", "yes: the agent has not fetched"}},
        {{L"explain", L"--server", L"MSCfg.ScanSpeed"}, 0, {"scan INI: wrbscan.ini", "cached for 6 s"}},
        {{L"explain", uid, L"NCIE Settings"},
         0,
         {"EnableCNP            1      database bit     DBV2_GET_CLIENT_NCIE_CFG, flags"}},
        {{L"set", uid, L"MSCfg.OleLayer=300"}, 2, {"Manual Scan Configuration.OleLayer must be 0 to 255 layers"}},
        {{L"set", uid, L"MSCfg.OleLayer=5", L"MSCfg.Enable=0", L"--dry-run"}, 0, {"OleLayer  3    5", "dry run"}},
        {{L"get", uid, L"MSCfg.OleLayer"}, 0, {"3\n"}},
        {{L"set", uid, L"MSCfg.OleLayer=5", L"MSCfg.Enable=0", L"--yes"},
         0,
         {"Enable    1    0", "stored and read back"}},
        {{L"set", uid, L"MSCfg.OleLayer=5", L"--yes"}, 0, {"nothing to change"}},
        {{L"set", uid, L"MSCfg.OleLayer=5", L"mscfg.OleLayer=6"}, 2, {"the setting is given twice"}},
        {{L"set", uid, L"ServiceSwitch.x=1"}, 2, {"[ServiceSwitch] cannot be changed here"}},
        {{L"audit", uid, L"--limit", L"1"}, 0, {"Manual Scan Configuration.OleLayer  3    5", "1 of 2 changes"}},
        {{L"send", L"CMDHL_GET_MS_CFG", kUnknownAgent}, 0, {"the answer is empty; "}},
        {{L"set", L"--server", L"MSCfg.OleLayer=4", L"--yes", L"--json"}, 0, {R"("written" : true)", R"("old" : "3")"}},
        {{L"set", L"--all", L"SpySNCfg.ScanType=1", L"RTCfg.OleLayer=9", L"--yes"},
         0,
         {"no settings of the group", "stored and"}},
        {{L"get", other, L"RTCfg.OleLayer"}, 0, {"9\n"}},
        {{L"diff", uid, other}, 0, {"Manual Scan Configuration.OleLayer"}},
        {{L"diff", uid, L"--server"}, 0, {"Manual Scan Configuration.OleLayer "}},
        {{L"diff", uid, uid}, 0, {"no differences"}},
        {{L"check"},
         1,
         {"wrbscan.ini:2: error: [Manual Scan Configuration] has no key \"ScanBot\"; did you mean \"ScanBoot\"?",
          "wrbscan.ini:3: error: \"ScanSpeed\" must be 0, 1 or 2, not 7"}},
        {{L"send", L"CMDHL_SET_MS_CFG_EX", uid, L"1"}, 2, {"has 5 fields, not 2: uid, Exclude"}},
        {{L"send", L"CMDHL_SET_MS_CFG_EX", uid, L"1", L"--raw"}, 0, {}},
        {{L"send", L"CMDHL_ECO", L"x"}, 2, {"did you mean CMDHL_ECHO?"}},
        {{L"load", L"--agents", L"3", L"--rate", L"50", L"--for", L"1"},
         0,
         {"\n50 commands of 3 agents in ", " 0 errors"}},
        {{L"load", L"--for", L"0.1", L"--json", L"--mix", (home / L"mix").wstring()},
         0,
         {R"("command" : "CMDHL_PFW_SET_POLICY_ID")", R"("errors" : 0)", R"("p999Ms" : )", R"("back end" :)"}},
        {{L"upload", L"firewall", uid, (home / L"records.jsonl").wstring()}, 0, {"2 of 2 records arrived"}},
        {{L"upload", L"firewall", uid, (home / L"empty.jsonl").wstring()}, 2, {"has no record"}},
        {{L"diagnostics", (home / L"all.zip").wstring()}, 0, {"wrote "}},
        {{L"statsu"}, 2, {"Did you mean status?"}},
        {{L"get", L"--jsn"}, 2, {"Did you mean --json?"}},
        {{L"completion", L"bash"}, 0, {"status) words=\"--help --json\" ;;"}},
        {{L"completion", L"powershell"}, 0, {"'explain' = '--help --server --json'"}},
    });
    EXPECT_NE(Ask(L"CMDHL_GET_MS_CFG", L"").find(L"\nOleLayer=4\n"), std::wstring::npos)
        << "without waiting for the cache";
    DbListing audit;
    while (audit.Rows() < 2) {
        ASSERT_TRUE(ReadDbListing({.table = L"audit", .search = L"Configuration.OleLayer", .order = 1}, audit));
    }
    EXPECT_EQ(audit.Cell(0, 3), uid);
    EXPECT_EQ(audit.Cell(0, 6), L"5");
    const std::string zip = ReadAll(home / L"all.zip");
    for (const char* part :
         {"PK\3\4", "status.json", "SmtpPassword=********", "[Manual Scan Configuration] has no key"}) {
        EXPECT_NE(zip.find(part), zip.npos) << part;
    }
    EXPECT_EQ(zip.find("secret"), zip.npos);
    host.ExpectEnd(0, {});
    ExpectRows({{{L"load"}, 3, {"the host does not answer"}},
                {{L"status"}, 3, {"down     host", "not running; start wrbhost", "ok       store"}}});
    backEnd.Stop();
    ExpectRows({{{L"status"}, 3, {"down     database server"}},
                {{L"get", uid}, 3, {"does wrbback serve?"}},
                {{L"get", L"--server", L"SNCfg.ScanMethod"}, 0, {"0\n"}}});
}

TEST(Ctl, FindsNothingInTheSamplesAndEveryMistakeInItsRow) {
    ExpectRows({{{L"check", L"--strict", L"--home", ProgramFolder() + L"sample-home"}, 0, {"no findings in "}}});
    const std::string kServerIni = "[INI_SERVER_SECTION]\nStringProtectionKey=" + std::string(64, '7') + "\n";
    const struct {
        const wchar_t* file;
        std::string bytes;
        DWORD code;
        DWORD strict;
        const char* part;
    } kRows[] = {
        {L"wrbscan.ini", "\xEF\xBB\xBF[Firewall Alert]\n", 1, 1, "begins with a UTF-8 mark"},
        {L"wrbscan.ini", std::string("[\0F\0]\0", 6), 1, 1, "is UTF-16 or binary"},
        {L"wrbscan.ini", "[Firewall Alert]\nEnable=1\n[firewall alert]\n", 1, 1,
         ":3: error: the section \"firewall alert\" comes again; only the one in line 1"},
        {L"wrbscan.ini", "[Firewal Alert]\n", 0, 1, "did you mean \"Firewall Alert\"?"},
        {L"wrbscan.ini", "[Firewall Alert]\nSmtpPort=99999\n", 1, 1, "\"SmtpPort\" must be 1 to 65535, not 99999"},
        {L"wrbscan.ini", "[Firewall Alert]\nSmtpPort=x\n", 1, 1, "\"SmtpPort\" must be a number, not \"x\""},
        {L"wrbscan.ini", "[Firewall Alert]\nMail=1\nMAIL=0\n", 0, 1, ":3: warning: the key \"MAIL\" comes again"},
        {L"wrbscan.ini", "Mail=1\n", 0, 1, "precedes the first section"},
        {L"wrbscan.ini", "[Firewall Alert]\nMail\n", 0, 1, "is neither a section, a key nor a comment"},
        {L"wrbscan.ini",
         "; [x]\r\n\r\n[Global Setting]\r\nanything=goes\r\n[INI_MAJOR_VIRUS_TYPE_SECTION]\r\nName_017=a\r\n", 0, 0,
         "no findings"},
        {L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\nStringProtectionKey=12\n", 1, 1,
         "is not 64 hexadecimal digits"},
        {L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\n", 0, 1, "warning: has no StringProtectionKey"},
        {L"Private\\wrbserver.ini", kServerIni + "[LOG_TICKET_SECTION]\nNumberOfConcurrentLogUploadingClient=90\n", 0,
         1, "is 90, but counts as 40"},
        {L"admin\\ALERT.MSG", "narrow text", 1, 1, "is not UTF-16"},
        {L"admin\\ALERT.MSG", std::string(4098, '\0'), 0, 1, "is longer than 4096 bytes"},
    };
    for (const auto& row : kRows) {
        const TempFolder folder;
        std::filesystem::create_directories((folder / row.file).parent_path());
        std::filesystem::create_directories(folder / L"Private");
        WriteAll(folder / L"Private\\wrbserver.ini", kServerIni);
        WriteAll(folder / row.file, row.bytes);
        ExpectRows({{{L"check", L"--home", folder.Path()}, row.code, {row.part}},
                    {{L"check", L"--strict", L"--home", folder.Path()}, row.strict, {}}});
    }
}

}  // namespace
}  // namespace wrb::test
