// The database file: seeded, asked and changed.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>

#include "ChildProcess.h"
#include "Listing.h"
#include "OnThreads.h"
#include "ScanTable.h"
#include "SeedFile.h"
#include "SeedStore.h"
#include "SqlAddress.h"
#include "Store.h"
#include "StorePool.h"
#include "TempFolder.h"
#include "Text.h"
#include "TextCommands.h"

namespace wrb {
namespace {

using test::ReadAll;
using test::TempFolder;
using test::WriteAll;

std::string WhyNot(const std::wstring& path) {
    try {
        const auto db = OpenStore(path);
        VerifyStore(*db, path, VerifyDepth::kIndexesToo);
        return {};
    } catch (const SqlError& error) {
        return error.what();
    }
}

TEST(SqlAddress, OurKeywordsAreTakenOutOfTheConnectionString) {
    constexpr char kSeconds[] = "Timeout takes a number from 1 to 3600";
    const std::tuple<const wchar_t*, const wchar_t*, unsigned, unsigned, std::string> kCases[] = {
        {L"odbc:Driver={a;LoginTimeout=1};Pwd=x", L"Driver={a;LoginTimeout=1};Pwd=x", 10, 30, ""},
        {L"odbc:LOGINTIMEOUT=2;Dsn=d; StatementTimeout =3600", L"Dsn=d", 2, 3600, ""},
        {L"odbc:Dsn=d;LoginTimeout=0", L"Dsn=d", 10, 30, std::string("Login") + kSeconds},
        {L"odbc:StatementTimeout=3601;Dsn=d", L"Dsn=d", 10, 30, std::string("Statement") + kSeconds},
        {L"odbc:Dsn=d;LoginTimeout", L"Dsn=d", 10, 30, std::string("Login") + kSeconds},
        {L"odbc:LoginTimeout=1", L"", 1, 30, "names no connection"},
        {L"sqlite:LoginTimeout=2", L"LoginTimeout=2", 10, 30, ""},
    };
    for (const auto& [text, target, login, statement, wrong] : kCases) {
        const SqlAddress address = ParseSqlAddress(text);
        EXPECT_EQ(address.wrong, wrong);
        EXPECT_EQ(address.target, target);
        EXPECT_EQ(address.loginSeconds, login);
        EXPECT_EQ(address.statementSeconds, statement);
    }
}

TEST(Store, AFileThatCannotBeUsedIsNamedWithTheReason) {
    const TempFolder folder;
    const std::wstring path = (folder / L"b\xfcro.db").wstring();
    std::unique_ptr<SqlDb> other;
    const std::tuple<const char*, std::function<void()>, const char*> kCases[] = {
        {"missing", [] {}, "there is no such file; make it with: wrbback seed"},
        {"empty", [&] { WriteAll(path, ""); }, "is empty; fill it with"},
        {"text", [&] { WriteAll(path, std::string(5000, 'x')); }, "is not a database"},
        {"another program's", [&] { SqlDb(path).Execute("CREATE TABLE theirs (x); PRAGMA user_version = 1"); },
         "is a database of another program"},
        {"a newer version's", [&] { CreateStore(path)->Execute("PRAGMA user_version = 99"); },
         "has version 99, this program knows 4"},
        {"damaged",
         [&] {
             CreateStore(path)->Execute("PRAGMA journal_mode = DELETE");
             std::string bytes = ReadAll(path);
             // The page size in the header says where the second page starts.
             const std::size_t page = static_cast<unsigned char>(bytes[16]) * 256u;
             std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(page), bytes.end(), '\x55');
             WriteAll(path, bytes);
         },
         "is damaged"},
        {"an index that lacks a row",
         [&] {
             CreateStore(path)->Execute(
                 "INSERT INTO agent (uid) VALUES ('u'); INSERT INTO special_log (uid, log_type, text, received) VALUES "
                 "('u', 1, 't', 0); PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = 'CREATE INDEX "
                 "special_log_of_agent ON special_log (log_type)' WHERE name = 'special_log_of_agent'");
         },
         "is damaged: row 1 missing from index"},
        {"locked",
         [&] {
             CreateStore(path);
             other = std::make_unique<SqlDb>(path);
             other->Execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
         },
         "is locked by another program"},
    };
    for (const auto& [what, prepare, reason] : kCases) {
        std::filesystem::remove(path);
        prepare();
        const std::string why = WhyNot(path);
        EXPECT_TRUE(why.starts_with(WideToUtf8(path) + ": ")) << what << ": " << why;
        EXPECT_NE(why.find(reason), std::string::npos) << what << ": " << why;
    }
    other.reset();
    EXPECT_EQ(WhyNot(path), "");
}

TEST(Store, AFileOfTheVersionBeforeOrWithoutATableOfABundleIsBroughtForward) {
    const TempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    CreateStore(path)->Execute(
        "CREATE TRIGGER special_log_limit AFTER INSERT ON special_log BEGIN DELETE FROM special_log; END;"
        "INSERT INTO agent (uid) VALUES ('u'); DROP TABLE aggr_scan; DROP TABLE audit; PRAGMA user_version = 2");
    for (int i = 0; i < 2; ++i) {
        const auto db = OpenStore(path);
        EXPECT_EQ(db->NumberOf("PRAGMA user_version"), 4);
        EXPECT_EQ(db->NumberOf("SELECT count(*) FROM sqlite_master WHERE type = 'trigger'"), 0);
        EXPECT_EQ(db->NumberOf("SELECT count(*) FROM agent"), 1);
        EXPECT_EQ(db->NumberOf("SELECT count(*) FROM aggr_scan"), 0);
        EXPECT_EQ(db->NumberOf("SELECT count(*) FROM audit"), 0);
    }
}

TEST(Store, ThePoolLendsEachConnectionToOneThreadAndReadersGoOnWhileAWriterIsInTheMiddle) {
    const TempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    const auto writer = CreateStore(path);
    SqlTransaction transaction(*writer);
    writer->Execute("INSERT INTO agent (uid) VALUES ('u')");
    StorePool pool(path, 2);
    std::atomic<int> out{0};
    test::OnThreads(6, [&](unsigned) {
        for (int n = 0; n < 50; ++n) {
            const auto lease = pool.Lend();
            EXPECT_LE(++out, 2);
            EXPECT_EQ(lease.Db().NumberOf("SELECT count(*) FROM agent"), 0);
            --out;
        }
    });
    transaction.Commit();
    EXPECT_EQ(pool.Lend().Db().NumberOf("SELECT count(*) FROM agent"), 1);
}

TEST(Store, AnEngineThatHangsKeepsTheConnectionsAndNobodyElseWaits) {
    const TempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    CreateStore(path);
    StorePool pool(path, 2, std::chrono::milliseconds(50));
    std::promise<void> engine;
    const std::shared_future<void> goesOn = engine.get_future().share();
    std::promise<std::string> told[2];
    test::OnThreads(3, [&](unsigned thread) {
        if (thread < 2) {
            pool.Run([&](SqlDb&) { goesOn.wait(); }, [&](const SqlError& why) { told[thread].set_value(why.what()); });
            return;
        }
        for (std::promise<std::string>& one : told) {
            EXPECT_NE(one.get_future().get().find("agents.db: no answer for "), std::string::npos);
        }
        EXPECT_THROW(pool.Lend(), SqlError);
        engine.set_value();
    });
    EXPECT_EQ(pool.Lend().Db().NumberOf("SELECT count(*) FROM agent"), 0);
}

TEST(Store, AStatementEndsAtItsTime) {
    const TempFolder folder;
    const auto db = CreateStore((folder / L"agents.db").wstring());
    db->EndStatementsAt(std::chrono::steady_clock::now());
    EXPECT_THROW(db->NumberOf("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n"),
                 SqlError);
    db->EndStatementsAt(std::chrono::steady_clock::now() + std::chrono::hours(1));
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM service_switch"), 11);
}

// A file, or the database that the variable WRB_TEST_STORE names.
struct SharedStore : testing::Test {
    SharedStore() {
        StoreSeed(*CreateStore(address), ParseSeed(R"({"agents": [{"uid": ")" + WideToUtf8(kAgent) + "\"}]}"));
    }
    static int64_t Write(SqlDb& db, DbCommand command, const std::wstring& fields) {
        CCmdProtocol request((kAgent + (L"\t" + fields)).c_str());
        return RunTextCommand(db, command, request);
    }
    static constexpr wchar_t kAgent[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
    const TempFolder folder;
    const wchar_t* const given = _wgetenv(L"WRB_TEST_STORE");
    const std::wstring address = given != nullptr ? given : (folder / L"agents.db").wstring();
};

TEST_F(SharedStore, EightConnectionsChangeOneAgentAndNoBitIsLost) {
    test::OnThreads(8, [this](unsigned thread) {
        StorePool pool(address, 1);
        const std::wstring bits = std::to_wstring(0x01010101u << thread);
        for (int n = 0; n < 5; ++n) {
            for (const std::wstring& fields : {L"0\t" + bits, bits + L"\t0"}) {
                EXPECT_EQ(pool.Run([&](SqlDb& db) { return Write(db, DbCommand::SetConfFlag, fields); }), 1);
            }
            EXPECT_EQ(pool.Run([&](SqlDb& db) { return Write(db, DbCommand::SetMsFlg, bits + L"\t" + bits); }), 1)
                << "the first of them gives the agent a configuration";
        }
    });
    const auto db = OpenStore(address);
    EXPECT_EQ(db->NumberOf("SELECT changed FROM agent"), 0xFFFFFFFF);
    EXPECT_EQ(db->NumberOf("SELECT flags FROM scan WHERE type = 0"), 0xFFFFFFFF);
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM scan"), 4);
}

TEST_F(SharedStore, EveryListIsSearchedAndOrderedByEachEngine) {
    const auto db = OpenStore(address);
    Write(*db, DbCommand::SetMsFlg, L"5\t7");
    Write(*db, DbCommand::AddAudit, L"target\tsetting\told\tnew");
    const struct {
        const wchar_t* request;
        const wchar_t* answer;  // its begin
    } cases[] = {
        {L"agents\t3F2A\t2\t1\t0\t5", L"1\t6\t3f2a6c10"},
        {L"agent\t3F2A6C10-5b1e-4d27-9a64-0c8e7d51b2f3\t0\t0\t0\t5", L"1\t23\t3f2a6c10"},
        {L"restore_session\tx\t0\t0\t0\t5", L"0\t1"},
        {L"firewall_log\tx\t1\t1\t0\t5", L"0\t10"},
        {L"restore_log\tx\t1\t0\t0\t5", L"0\t6"},
        {L"event\tx\t0\t0\t0\t5", L"0\t5"},
        {L"audit\tTARGET\t3\t1\t0\t5", L"1\t7\t1\t"},
        {L"scan.flags\t0\t0\t0\t0\t5", L"1\t2\t"},
        {L"scan.ext_list\t3\t0\t0\t0\t5", L"1\t2\t.EXE"},
    };
    for (const auto& test : cases) {
        CCmdProtocol request(test.request);
        const std::optional<std::wstring> answer = ListRows(*db, request);
        EXPECT_TRUE(answer && answer->starts_with(test.answer)) << testing::PrintToString(answer.value_or(L"none"));
    }
}

TEST_F(SharedStore, AConnectionThatTheServerEndsIsMadeAnew) {
    if (given == nullptr) {
        GTEST_SKIP() << "SQLite has no connection to lose";
    }
    StorePool pool(address, 2);
    const auto killer = OpenStore(address);
    const auto kill = [&killer] {
        killer->NumberOf(
            "SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity WHERE datname = current_database() "
            "AND pid <> pg_backend_pid()");
    };
    for (int n = 0; n < 3; ++n) {
        kill();
        EXPECT_EQ(pool.Run([](SqlDb& db) { return Write(db, DbCommand::SetConfFlag, L"1\t0"); }), 1);
    }
    const auto dieInside = [&](SqlDb& db) {
        SqlTransaction transaction(db);
        db.Execute("UPDATE agent SET changed = 2");
        kill();
        transaction.Commit();
    };
    EXPECT_THROW(dieInside(pool.Lend().Db()), SqlError);
    EXPECT_EQ(killer->NumberOf("SELECT changed FROM agent"), 1);
}

constexpr char kUid[] = "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";

// Every row of every table.
std::string DumpOf(SqlDb& db) {
    std::string dump;
    for (SqlStatement tables = db.Use("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name");
         tables.Step();) {
        const std::string table = WideToUtf8(tables.Text(0));
        for (SqlStatement rows = db.Use("SELECT * FROM " + table + " ORDER BY 1, 2"); rows.Step(); dump += '\n') {
            dump += table;
            for (int column = 0; column < rows.Columns(); ++column) {
                dump += '|' + WideToUtf8(rows.Text(column));
            }
        }
    }
    return dump;
}

std::string Agent(const std::string& members) {
    return std::string(R"({"agents": [{"uid": ")") + kUid + "\"" + (members.empty() ? "" : ", ") + members + "}]}";
}

TEST(Seed, WhatIsWrongIsSaidWithItsPlace) {
    const std::pair<std::string, const char*> kCases[] = {
        {"{", "not JSON"},
        {R"({"agents": [], "agents": []})", "not JSON"},
        {std::string(200, '[') + std::string(200, ']'), "not JSON"},
        {"\xFF{}", "the file: is not UTF-8"},
        {std::string("{\"agents\": []}\0{}", 17), "the file: holds a NUL"},
        {"{}", "the file: \"agents\" is missing"},
        {R"({"agents": [], "\u0000\u001b[2J": 1})", "\\u0000\\u001B[2J: unknown key"},
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
        } catch (const SeedError& error) {
            EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
        }
    }
}

TEST(Seed, ExportIsTheInverse) {
    const TempFolder folder;
    std::string text = ReadAll(test::ProgramFolder() + L"sample-agents.json");
    std::string all[2];
    for (std::string& dump : all) {
        const auto db = CreateStore((folder / std::to_wstring(text.size())).wstring());
        StoreSeed(*db, ParseSeed(text));
        text = WriteSeed(ReadSeed(*db));
        dump = DumpOf(*db);
    }
    EXPECT_EQ(all[0], all[1]);
    EXPECT_EQ(WriteSeed(ParseSeed(text)), text);
}

TEST(Seed, ADamagedStoreIsNotExported) {
    for (const auto& [damage, words] :
         {std::pair("PRAGMA ignore_check_constraints = ON; INSERT INTO agent (uid) VALUES "
                    "('u'); INSERT INTO scan (uid, type) VALUES ('u', 99)",
                    "the table scan has a row of type 99"),
          std::pair("DELETE FROM service_switch WHERE position = 4", "the table service_switch has 10 rows, not 11")}) {
        const auto db = CreateStore(L":memory:");
        db->Execute(damage);
        try {
            ReadSeed(*db);
            ADD_FAILURE() << damage;
        } catch (const SqlError& error) {
            EXPECT_STREQ(error.what(), words);
        }
    }
}

TEST(Seed, ScanKeysSetTheBitsOfTheirOwnSection) {
    const SeedData seed = ParseSeed("\xEF\xBB\xBF" + Agent(R"("scan": {
        "manual": {"Flags": 0, "IntelliScan": true, "ScanSpeed": 2, "OleLayer": -1, "MoveDir": "\\m",
                   "spyware": {"Flags": "0x0", "ActionType": 2}, "exclusions": {"ExcludeCallowayProduct": true}},
        "prescheduled": {"Flags": "0xFFFFFFFF", "IntelliScan": false, "ScanSpeed": 0, "Hour": 23}})"));
    const StoredScans& scans = seed.agents.at(0).scans.value();
    const StoredScan& manual = scans[static_cast<std::size_t>(ScanType::MS)];
    EXPECT_EQ(manual.values.flags, (1u << 8) | (1u << 18) | (1u << 16));
    EXPECT_EQ(manual.values.oleLayer, 0xFFFFFFFFu);
    EXPECT_EQ(manual.values.moveDir, L"\\m");
    EXPECT_EQ(manual.spywareFlags, 1u << 17);
    const StoredScan& scheduled = scans[static_cast<std::size_t>(ScanType::PS)];
    // The exclusion section is not given, so its switch is as the flags say; the default would set it too.
    EXPECT_EQ(scheduled.values.flags, 0xFFFFFFFFu & ~((1u << 11) | (1u << 17) | (1u << 18)));
    EXPECT_EQ(scheduled.values.hour, 23u);
}

TEST(Seed, SeedingReplacesTheAgentsThatAreGivenAndNothingElse) {
    const std::string rich = Agent(R"("computer": "ONE", "approvedSpyware": ["a", "b"], "restoreSessions": ["s"],
        "behaviourPolicies": [{"id": "p", "action": 1, "enable": true}], "restoreItems": [{}, {}], "scan": {})");
    // Agents, those with a name, scans, approved spyware, sessions, policies, restore items; the switches that are off.
    const std::pair<std::string, const char*> kSteps[] = {
        {rich, "1 1 4 2 1 1 2 0 "},
        {rich, "1 1 4 2 1 1 2 0 "},
        {R"({"agents": [], "serviceSwitch": {"EnableDLPOnServer": false}})", "1 1 4 2 1 1 2 32 "},
        {R"({"agents": [{"uid": "8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42"}]})", "2 1 4 2 1 1 2 32 "},
        {Agent(""), "2 0 0 0 0 0 0 32 "},
        {R"({"agents": [], "serviceSwitch": {}})", "2 0 0 0 0 0 0 0 "},
    };
    const TempFolder folder;
    const auto db = CreateStore((folder / L"agents.db").wstring());
    const auto counted = [&db] {
        std::string numbers;
        for (const std::string column :
             {"count(*) FROM agent", "sum(computer <> '') FROM agent", "count(*) FROM scan",
              "count(*) FROM spyware_approved", "count(*) FROM restore_session", "count(*) FROM behaviour_policy",
              "count(*) FROM fa_restore_item", "sum((enabled = 0) << position) FROM service_switch"}) {
            numbers += std::to_string(db->NumberOf("SELECT " + column)) + " ";
        }
        return numbers;
    };
    for (const auto& [json, rows] : kSteps) {
        StoreSeed(*db, ParseSeed(json));
        EXPECT_EQ(counted(), rows) << json;
    }
    db->Execute("CREATE TRIGGER stop BEFORE INSERT ON fa_restore_item BEGIN SELECT RAISE(ABORT, 'full'); END");
    EXPECT_THROW(StoreSeed(*db, ParseSeed(rich)), SqlError);
    EXPECT_EQ(counted(), kSteps[5].second) << "what failed in the middle leaves nothing";
    EXPECT_FALSE(db->InTransaction());
}

constexpr wchar_t kAgent[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
constexpr wchar_t kOtherAgent[] = L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42";

struct TextCommandsTest : testing::Test {
    TextCommandsTest() : db(CreateStore((folder / L"agents.db").wstring())) {
        for (const wchar_t* uid : {kAgent, kOtherAgent}) {
            db->Use("INSERT INTO agent (uid) VALUES (:uid)").Bind(":uid", uid).Run();
        }
        for (const ScanType type : kScanTypes) {
            InsertScan(*db, kAgent, type, DefaultScan(type));
        }
    }
    int64_t Write(DbCommand command, const std::wstring& fields) {
        CCmdProtocol request((kAgent + (L"\t" + fields)).c_str());
        return RunTextCommand(*db, command, request);
    }
    std::optional<std::wstring> Read(DbCommand command, const std::wstring& fields) {
        CCmdProtocol request((kAgent + (L"\t" + fields)).c_str());
        return AnswerTextCommand(*db, command, request);
    }
    TempFolder folder;
    std::unique_ptr<SqlDb> db;
};

TEST_F(TextCommandsTest, AMaskSaysWhichBitsAValueReplaces) {
    const std::tuple<uint32_t, uint32_t, const wchar_t*, const wchar_t*> kCases[] = {
        {0x0000000F, 0x000000F0, L"240", L"255"},
        {0xFFFFFFFF, 0x00010002, L"0", L"4294901757"},  // all but AllowCfg and the exclusion switch
        {0x00010002, 0xFFFFFFFF, L"4294967295", L"4294901757"},
        {0x12345678, 0x12345678, L"-1", L"0"},
        {0x00000000, 0x80000000, L"-1", L"-2147483648"},
        {0x000000FF, 0x000000F0, L"text", L"15"},
        {0x000000FF, 0x000000FF, L"", L""},
        {0x00000000, 0x00000007, L" +7x", L"99999999999999999999"},
    };
    for (const auto& [stored, result, value, mask] : kCases) {
        db->Use("UPDATE scan SET flags = @f, spyware_flags = @f, ole_layer = 4294967295").Bind("@f", stored).Run();
        EXPECT_EQ(Write(DbCommand::SetMsFlg, std::wstring(value) + L"\t" + mask), 1);
        const std::wstring shown = std::to_wstring(static_cast<int32_t>(result)) + L"\t20\t-1\t4";
        EXPECT_EQ(Read(DbCommand::GetMscf, L"0"), shown);
        EXPECT_EQ(db->NumberOf("SELECT sum(flags) + sum(spyware_flags) FROM scan"), result + int64_t{stored} * 7);
    }
}

TEST_F(TextCommandsTest, ConfigurationBitsChooseTheGroup) {
    const std::pair<const wchar_t*, std::optional<std::wstring>> kCases[] = {
        {L"1", L"ms\t\\m\t\t\ta"}, {L"1024", L"sn\t\\m\t\t\ta"}, {L"256", L"f-ms\tf\te"},
        {L"65536", L"f-sn\tf\te"}, {L"0", std::nullopt},         {L"3", std::nullopt},
        {L"-1", std::nullopt},     {L"", std::nullopt},          {L"4294967297", std::nullopt},
    };
    db->Execute(
        "UPDATE scan SET ext_list = substr('msrtpssn', type * 2 + 1, 2), move_dir = '\\m', cust_action = 'a', "
        "excluded_folder = 'f-' || substr('msrtpssn', type * 2 + 1, 2), excluded_file = 'f', excluded_ext = 'e'");
    for (const auto& [bit, answer] : kCases) {
        EXPECT_EQ(Read(DbCommand::GetExtra, bit), answer) << testing::PrintToString(std::wstring(bit));
    }
    EXPECT_EQ(Write(DbCommand::SetExcludeList, L"1\tx\ty\tz"), 0);  // a main group's bit
    const std::wstring halves = L"256\t\xDE00 x \xD800\t\xD83D\xDE00\t'; DROP TABLE scan; --";
    EXPECT_EQ(Write(DbCommand::SetExcludeList, halves), 1);
    EXPECT_EQ(Read(DbCommand::GetExtra, L"256"), halves.substr(4)) << "as it was written";
}

TEST_F(TextCommandsTest, SpecialLogsHaveAnEnd) {
    db->Execute(
        "INSERT INTO special_log (id, uid, log_type, text, received) "
        "SELECT value, '3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3', 1, 'old', 0 FROM (SELECT 1 value UNION SELECT 10000)");
    EXPECT_EQ(Write(DbCommand::SetSpecialLog, L"7\ttext"), 1);
    EXPECT_EQ(db->NumberOf("SELECT sum(id) FROM special_log"), 10000 + 10001) << "the first has gone";
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM special_log WHERE log_type = 7 AND received > 1600000000"), 1);
}

}  // namespace
}  // namespace wrb
