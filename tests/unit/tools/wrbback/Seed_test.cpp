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
        {R"({"agents": [], "agents": []})", "not JSON"},
        {std::string(200, '[') + std::string(200, ']'), "not JSON"},
        {"\xFF{}", "the file: is not UTF-8"},
        {"{}", "the file: \"agents\" is missing"},
        {R"({"agents": [{"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2fg"}]})", "agents[0].uid: must be a GUID"},
        {R"({"agents": [{"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3"},
                        {"uid": "3F2A6C10-5B1E-4D27-9A64-0C8E7D51B2F3"}]})",
         "agents[1].uid: is the uid of agents[0] too"},
        {Agent(R"("computer": "a\tb")"), "agents[0].computer: holds a TAB"},
        {Agent(R"("computer": ")" + std::string(65536, 'x') + "\""), "agents[0].computer: is longer"},
        {Agent(R"("platform": 4294967296)"), "agents[0].platform: must be a whole number of 32 bits"},
        {Agent(R"("platform": 1.5)"), "agents[0].platform: must be a whole number of 32 bits"},
        {Agent(R"("domain": {"pth": "x"})"), "agents[0].domain.pth: unknown key"},
        {Agent(R"("restoreSessions": ["a", ""])"), "agents[0].restoreSessions[1]: must not be empty"},
        {Agent(R"("behaviourPolicies": [{"id": "a", "action": 1}])"), "agents[0].behaviourPolicies[0]: \"enable\" is"},
        {Agent(R"("scan": {"manual": {"USBBootScan": true}})"), "agents[0].scan.manual.USBBootScan: unknown key"},
        {Agent(R"("scan": {"manual": {"CleanFailedMoveDir": "x"}})"), "CleanFailedMoveDir: is not stored"},
        {Agent(R"("scan": {"manual": {"ScanSpeed": 3}})"), "agents[0].scan.manual.ScanSpeed: has no such value"},
        {Agent(R"("sablex": {"ExceptionItem": ["a", "b|c"]})"), "agents[0].sablex.ExceptionItem[1]: must not be empty"},
        {Agent(R"("webThreat": {"URLFilterAWSL_InOffice": [""]})"), "URLFilterAWSL_InOffice[0]: must not be empty"},
        {Agent(R"("webThreat": {"URLFilterAWSLCount_InOffice": 1})"), "URLFilterAWSLCount_InOffice: unknown key"},
        {Agent(R"("ncie": {"EnableRR": 1})"), "agents[0].ncie.EnableRR: must be"},
        {Agent(R"("restoreItems": [{}, {"FACount": "1"}])"), "agents[0].restoreItems[1].FACount: unknown key"},
        {Agent(R"("agentPolicy": [])"), "agents[0].agentPolicy: unknown key"},
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

TEST(Seed, SeedingReplacesTheAgentsThatAreGivenAndNothingElse) {
    const std::string rich = Agent(R"("computer": "ONE", "approvedSpyware": ["a", "b"], "restoreSessions": ["s"],
        "behaviourPolicies": [{"id": "p", "action": 1, "enable": true}], "restoreItems": [{}, {}], "scan": {})");
    const struct {
        std::string json;
        const wchar_t* rows;  // agents, those with a name, scans, approved spyware, sessions, policies, restore items
        const wchar_t* switchedOff;
    } kSteps[] = {
        {rich, L"1 1 4 2 1 1 2", L""},
        {rich, L"1 1 4 2 1 1 2", L""},
        {R"({"agents": [], "serviceSwitch": {"EnableDLPOnServer": false}})", L"1 1 4 2 1 1 2", L"5"},
        {R"({"agents": [{"uid": "8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42"}]})", L"2 1 4 2 1 1 2", L"5"},
        {Agent(""), L"2 0 0 0 0 0 0", L"5"},
        {R"({"agents": [], "serviceSwitch": {}})", L"2 0 0 0 0 0 0", L""},
    };
    const test::CTempFolder folder;
    const auto db = CreateStore((folder / L"agents.db").wstring());
    for (const auto& [json, rows, switchedOff] : kSteps) {
        StoreSeed(*db, ParseSeed(json));
        CSqliteStatement read = db->Use(
            "SELECT (SELECT count(*) || ' ' || sum(computer <> '') FROM agent) || ' ' || (SELECT count(*) FROM scan) "
            "|| "
            "' ' || (SELECT count(*) FROM spyware_approved) || ' ' || (SELECT count(*) FROM restore_session) || ' ' || "
            "(SELECT count(*) FROM behaviour_policy) || ' ' || (SELECT count(*) FROM fa_restore_item), "
            "(SELECT coalesce(group_concat(position), '') FROM service_switch WHERE enabled = 0)");
        ASSERT_TRUE(read.Step());
        EXPECT_EQ(read.Text(0), rows) << json;
        EXPECT_EQ(read.Text(1), switchedOff) << json;
    }
}

}  // namespace
}  // namespace wrb
