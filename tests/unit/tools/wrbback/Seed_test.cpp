#include <gtest/gtest.h>

#include "SeedFile.h"
#include "SeedStore.h"
#include "Store.h"
#include "TempFolder.h"

namespace wrb {
namespace {

constexpr char kUid[] = "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";

std::string Agent(const std::string& members) {
    return std::string(R"({"agents": [{"uid": ")") + kUid + "\"" + (members.empty() ? "" : ", ") + members + "}]}";
}

const tagStoredScan& ScanOf(const tagSeed& seed, ScanType type) {
    return seed.agents.at(0).scans.value().at(static_cast<std::size_t>(type));
}

TEST(Seed, WhatIsWrongIsSaidWithItsPlace) {
    const struct {
        std::string json;
        const char* message;
    } kCases[] = {
        {"{", "not JSON"},
        {"{} x", "not JSON"},
        {R"({"agents": [], "agents": []})", "not JSON"},
        {std::string(200, '[') + std::string(200, ']'), "not JSON"},
        {"\xFF{}", "the file: is not UTF-8"},
        {"[]", "the file: must be an object"},
        {"{}", "the file: \"agents\" is missing"},
        {R"({"agents": {}})", "agents: must be a list"},
        {R"({"agents": [], "agent": 1})", "agent: unknown key"},
        {R"({"agents": [7]})", "agents[0]: must be an object"},
        {R"({"agents": [{}]})", "agents[0]: \"uid\" is missing"},
        {R"({"agents": [{"uid": "x"}]})", "agents[0].uid: must be a GUID"},
        {R"({"agents": [{"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2fg"}]})", "agents[0].uid: must be a GUID"},
        {R"({"agents": [{"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3"},
                        {"uid": "3F2A6C10-5B1E-4D27-9A64-0C8E7D51B2F3"}]})",
         "agents[1].uid: is the uid of agents[0] too"},
        {Agent(R"("computor": "x")"), "agents[0].computor: unknown key"},
        {Agent(R"("computer": 7)"), "agents[0].computer: must be a text"},
        {Agent(R"("computer": "a\tb")"), "agents[0].computer: holds a TAB"},
        {Agent(R"("computer": "a\u0000b")"), "agents[0].computer: holds a TAB"},
        {Agent(R"("computer": ")" + std::string(65536, 'x') + "\""), "agents[0].computer: is longer"},
        {Agent(R"("platform": "7")"), "agents[0].platform: must be a whole number, or a hexadecimal"},
        {Agent(R"("platform": 4294967296)"), "agents[0].platform: must be a whole number of 32 bits"},
        {Agent(R"("platform": -2147483649)"), "agents[0].platform: must be a whole number of 32 bits"},
        {Agent(R"("platform": 1.5)"), "agents[0].platform: must be a whole number of 32 bits"},
        {Agent(R"("platform": "0x100000000")"), "agents[0].platform: must be"},
        {Agent(R"("domain": "x")"), "agents[0].domain: must be an object"},
        {Agent(R"("domain": {"pth": "x"})"), "agents[0].domain.pth: unknown key"},
        {Agent(R"("restoreSessions": ["a", ""])"), "agents[0].restoreSessions[1]: must not be empty"},
        {Agent(R"("behaviourPolicies": [{"id": "a", "action": 1}])"), "agents[0].behaviourPolicies[0]: \"enable\" is"},
        {Agent(R"("scan": {"weekly": {}})"), "agents[0].scan.weekly: unknown key"},
        {Agent(R"("scan": {"manual": {"USBBootScan": true}})"), "agents[0].scan.manual.USBBootScan: unknown key"},
        {Agent(R"("scan": {"manual": {"UID": "x"}})"), "agents[0].scan.manual.UID: unknown key"},
        {Agent(R"("scan": {"manual": {"CleanFailedMoveDir": "x"}})"), "CleanFailedMoveDir: is not stored"},
        {Agent(R"("scan": {"manual": {"Enable": 1}})"), "agents[0].scan.manual.Enable: must be true or false"},
        {Agent(R"("scan": {"manual": {"ScanSpeed": 3}})"), "agents[0].scan.manual.ScanSpeed: has no such value"},
        {Agent(R"("scan": {"realTime": {"spyware": {"ScanType": 1}}})"), "realTime.spyware.ScanType: unknown key"},
        {Agent(R"("scan": {"scanNow": {"exclusions": {"Flags": 1}}})"), "scanNow.exclusions.Flags: unknown key"},
        {Agent(R"("webThreat": {"EnablePolicyIn": 1})"), "agents[0].webThreat.EnablePolicyIn: must be true or false"},
        {Agent(R"("ncie": {"EnableX": true})"), "agents[0].ncie.EnableX: unknown key"},
        {Agent(R"("sablex": {"ExceptionItem": ["a", "b|c"]})"), "agents[0].sablex.ExceptionItem[1]: must not be empty"},
        {Agent(R"("restoreItems": [{"FAFileDir": 1}])"), "agents[0].restoreItems[0].FAFileDir: must be a text"},
        {Agent(R"("agentPolicies": [{"Item": "x"}])"), "agents[0].agentPolicies[0].Item: unknown key"},
        {R"({"agents": [], "serviceSwitch": {"EnableX": true}})", "serviceSwitch.EnableX: unknown key"},
    };
    for (const auto& [json, message] : kCases) {
        try {
            ParseSeed(json);
            ADD_FAILURE() << "accepted: " << json.substr(0, 200);
        } catch (const CSeedError& error) {
            EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
        }
    }
}

TEST(Seed, NumbersInEveryForm) {
    const struct {
        const char* json;
        uint32_t number;
    } kCases[] = {
        {"0", 0}, {"4294967295", 4294967295}, {"-1", 4294967295}, {R"("0x1C507")", 0x1C507}, {R"("0Xff")", 255}};
    for (const auto& [json, number] : kCases) {
        const tagSeed seed = ParseSeed(Agent(std::string(R"("changed": )") + json));
        EXPECT_EQ(seed.agents.at(0).values.at(0).number, number) << json;
    }
}

TEST(Seed, ScanKeysSetTheBitsOfTheirOwnSection) {
    const tagSeed seed = ParseSeed("\xEF\xBB\xBF" + Agent(R"("scan": {
        "manual": {"Flags": 0, "IntelliScan": true, "ScanSpeed": 2, "OleLayer": -1, "MoveDir": "\\m",
                   "spyware": {"Flags": "0x0", "ActionType": 2}, "exclusions": {"ExcludeCallowayProduct": true}},
        "prescheduled": {"Flags": "0xFFFFFFFF", "IntelliScan": false, "ScanSpeed": 0, "Hour": 23}})"));
    const tagStoredScan& manual = ScanOf(seed, ScanType::MS);
    EXPECT_EQ(manual.values.flags, (1u << 8) | (1u << 18) | (1u << 16));
    EXPECT_EQ(manual.values.oleLayer, 0xFFFFFFFFu);
    EXPECT_EQ(manual.values.moveDir, L"\\m");
    EXPECT_EQ(manual.spywareFlags, 1u << 17);
    const tagStoredScan& scheduled = ScanOf(seed, ScanType::PS);
    // The exclusion section is not given, so its switch is as the flags say; the default would set it too.
    EXPECT_EQ(scheduled.values.flags, 0xFFFFFFFFu & ~((1u << 11) | (1u << 17) | (1u << 18)));
    EXPECT_EQ(scheduled.values.hour, 23u);
}

TEST(Seed, WhatIsLeftOutHasTheDefaultsOfTheServerWideSettings) {
    const tagSeed seed = ParseSeed(Agent(R"("scan": {"realTime": {}})"));
    // The real-time defaults, bit by bit: Enable, ScanBoot, ScanShutDown, ScanCompressed, ScanAllFiles, BkUpIfClean,
    // ScanSpyware, ScanIncoming, EnableExclusion, EnableUniAct, PopVirusFoundAlert, IntelliTrap,
    // DispPossibleVirusFoundAlert, OleExploitDetection and, of the exclusions, the maker's own products.
    constexpr uint32_t kRealTime = 0x1 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x80 | 0x400 | 0x1000 | 0x2000 | 0x8000 |
                                   0x10000 | 0x1000000 | 0x10000000 | 0x20000000;
    EXPECT_EQ(ScanOf(seed, ScanType::RT).values.flags, kRealTime);
    EXPECT_EQ(ScanOf(seed, ScanType::SN).values.custAction, L"Universe-5-4");
    EXPECT_EQ(ScanOf(seed, ScanType::MS).values.excludeFileExtList, L"MP3;");
    EXPECT_EQ(ScanOf(seed, ScanType::MS).values.compressedLayer, 20u);
    EXPECT_FALSE(ParseSeed(Agent("")).agents.at(0).scans);
}

// Everything in the file's tables, for comparing two states.
std::wstring Dump(CSqliteDb& db) {
    std::wstring all;
    for (const char* sql :
         {"SELECT * FROM agent ORDER BY uid", "SELECT * FROM scan ORDER BY uid, type", "SELECT * FROM spyware_approved",
          "SELECT * FROM restore_session", "SELECT * FROM behaviour_policy", "SELECT * FROM service_switch",
          "SELECT * FROM web_threat", "SELECT * FROM fa_restore_item"}) {
        CSqliteStatement read = db.Use(sql);
        while (read.Step()) {
            for (int i = 0; i < read.Columns(); ++i) {
                all += read.Text(i) + L"|";
            }
            all += L"\n";
        }
    }
    return all;
}

TEST(Seed, SeedingTwiceIsSeedingOnceAndReplacesTheWholeAgent) {
    const test::CTempFolder folder;
    const auto db = CreateStore((folder / L"agents.db").wstring());
    const std::string rich = Agent(R"("computer": "ONE", "approvedSpyware": ["a", "b"], "restoreSessions": ["s"],
        "behaviourPolicies": [{"id": "p", "action": 1, "enable": true}], "webThreat": {"SecurityLevelIn": 1},
        "restoreItems": [{}, {"FAFileName": "x"}], "scan": {})");
    StoreSeed(*db, ParseSeed(rich));
    const std::wstring once = Dump(*db);
    StoreSeed(*db, ParseSeed(rich));
    EXPECT_EQ(Dump(*db), once);
    StoreSeed(*db, ParseSeed(R"({"agents": [{"uid": "8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42"}]})"));
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM agent"), 2);  // others stay
    StoreSeed(*db, ParseSeed(Agent("")));
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM scan"), 0);
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM agent WHERE computer = 'ONE'"), 0);
}

TEST(Seed, ServiceSwitchesChangeOnlyWhenTheyAreGiven) {
    const test::CTempFolder folder;
    const auto db = CreateStore((folder / L"agents.db").wstring());
    StoreSeed(*db, ParseSeed(R"({"agents": [], "serviceSwitch": {"EnableDLPOnServer": false}})"));
    StoreSeed(*db, ParseSeed(R"({"agents": []})"));
    EXPECT_EQ(db->NumberOf("SELECT group_concat(position) FROM service_switch WHERE enabled = 0"), 5);
    StoreSeed(*db, ParseSeed(R"({"agents": [], "serviceSwitch": {}})"));
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM service_switch WHERE enabled = 1"), 11);
}

TEST(Seed, TheSampleFileIsGood) {
    const tagSeed seed = ReadSeedFile(WRB_SAMPLES L"/agents.json");
    ASSERT_EQ(seed.agents.size(), 3u);
    EXPECT_NE(ScanOf({{seed.agents[1]}, {}}, ScanType::RT).values.custAction.find(L"CVE_Exploit"), std::wstring::npos);
    EXPECT_FALSE(seed.agents[2].scans);
}

}  // namespace
}  // namespace wrb
