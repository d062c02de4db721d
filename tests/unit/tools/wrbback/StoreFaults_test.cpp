// The database on a disk that fails.
#include <gtest/gtest.h>

#include <functional>

#include "FaultyDisk.h"
#include "MsgSerializer.h"
#include "RecordWriter.h"
#include "SeedStore.h"
#include "SerializedCommands.h"
#include "Store.h"
#include "StorePool.h"
#include "TempFolder.h"
#include "TextCommands.h"

namespace wrb {
namespace {

using test::FaultyDisk;

constexpr char kSeed[] = R"({"agents": [{"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3"},
    {"uid": "8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42", "scan": {}, "approvedSpyware": ["a"]}]})";
constexpr wchar_t kBare[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";

int64_t Write(SqlDb& db, DbCommand command, const std::wstring& fields) {
    CCmdProtocol request((kBare + (L"\t" + fields)).c_str());
    return RunTextCommand(db, command, request);
}

const std::pair<const char*, std::function<void(SqlDb&)>> kWorks[] = {
    {"read",
     [](SqlDb& db) {
         CCmdProtocol request(kBare);
         EXPECT_EQ(AnswerTextCommand(db, DbCommand::GetIp, request), L"");
     }},
    {"record",
     [](SqlDb& db) {
         CMsgSerializer answer(L"c");
         EXPECT_TRUE(AnswerSerializedCommand(db, DbCommand::ClientGetAllScanCfg, kBare, answer));
     }},
    {"write", [](SqlDb& db) { EXPECT_EQ(Write(db, DbCommand::SetConfFlag, L"1\t0"), 1); }},
    {"first setting", [](SqlDb& db) { EXPECT_EQ(Write(db, DbCommand::SetMsFlg, L"1\t1"), 1); }},
    {"special log", [](SqlDb& db) { EXPECT_EQ(Write(db, DbCommand::SetSpecialLog, L"1\ttext"), 1); }},
    {"seed", [](SqlDb& db) { StoreSeed(db, ParseSeed(kSeed)); }},
};

// Each read, write and the like fails in its turn: nothing is half done, and the next command works.
TEST(StoreFaults, AFailureAtAnyCallOfTheFileLayerChangesNothing) {
    FaultyDisk disk;
    for (const auto& [what, work] : kWorks) {
        for (const int code : {SQLITE_FULL, SQLITE_IOERR}) {
            const test::TempFolder folder;
            const std::wstring path = (folder / L"agents.db").wstring();
            StoreSeed(*CreateStore(path), ParseSeed(kSeed));
            bool failed = true;
            int call = 0;
            for (; failed && call < 500; ++call) {
                const auto db = OpenStore(path);
                disk.FailAfter(call, code);
                try {
                    work(*db);
                } catch (const SqlError&) {
                }
                failed = disk.Work();
                EXPECT_FALSE(db->InTransaction()) << what << call;
                work(*db);
                EXPECT_NO_THROW(VerifyStore(*db, path)) << what << call;
            }
            EXPECT_GT(call, 1) << what << ": no call has failed";
            EXPECT_FALSE(failed) << what;
        }
    }
}

TEST(StoreFaults, WhatGoesWrongWhileTheFileIsServedIsSaidAndPasses) {
    const std::pair<int, const char*> kCases[] = {
        {SQLITE_FULL, "database or disk is full"}, {SQLITE_IOERR, "disk I/O error"},
        {SQLITE_BUSY, "database is locked"},       {SQLITE_READONLY, "readonly database"},
        {SQLITE_CANTOPEN, "unable to open"},       {SQLITE_CORRUPT, "malformed"},
    };
    FaultyDisk disk;
    const test::TempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    StoreSeed(*CreateStore(path), ParseSeed(kSeed));
    StorePool pool(path, 1);
    const auto whyNot = [&pool]() -> std::string {
        try {
            EXPECT_EQ(pool.Run([](SqlDb& db) { return Write(db, DbCommand::SetSpecialLog, L"1\ttext"); }), 1);
            return {};
        } catch (const SqlError& error) {
            return error.what();
        }
    };
    for (const auto& [code, words] : kCases) {
        disk.FailAfter(0, code, true);
        const std::string why = whyNot();
        EXPECT_NE(why.find(words), std::string::npos) << why;
        EXPECT_TRUE(disk.Work());
        while (!whyNot().empty()) {
            Sleep(1);
        }
    }
}

struct RecordFaults : testing::Test {
    RecordFaults() : first(CreateStore(path)) {}
    bool Put(const wchar_t* name = L"n") {
        const bool took = writer.Put({&kEventRecords, {L"2024-01-31 23:59:59", L"s", name, L"f"}});
        ++(took ? taken : refused);
        return took;
    }
    FaultyDisk disk;
    const test::TempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    const std::unique_ptr<SqlDb> first;
    std::vector<std::wstring> alarms;
    uint64_t taken = 0;
    uint64_t refused = 0;
    RecordWriter writer{
        {path, 0, [](const std::wstring&) {}, [this](const std::wstring& text) { alarms.push_back(text); }}};
};

TEST_F(RecordFaults, AFullDiskRefusesRecordsAtOnceAndTakesThemAgainWhenThereIsRoom) {
    disk.FailAfter(0, SQLITE_FULL, true);
    while (Put()) {
    }
    EXPECT_LE(taken, 1001u) << "500 wait, 500 are tried";
    EXPECT_FALSE(Put());
    EXPECT_TRUE(disk.Work());
    while (!Put()) {
        Sleep(1);
    }
    writer.Finish();
    EXPECT_EQ(writer.Stored(), taken);
    EXPECT_EQ(writer.Lost(), refused);
    EXPECT_EQ(OpenStore(path)->NumberOf("SELECT count(*) FROM event"), static_cast<int64_t>(taken));
    ASSERT_EQ(alarms.size(), 2u) << "the first, and the rest when there is room";
    EXPECT_NE(alarms[0].find(L"records: 1 rows are refused: "), std::wstring::npos) << alarms[0].c_str();
    EXPECT_NE(alarms[1].find(std::to_wstring(refused - 1) + L" rows are refused: "), std::wstring::npos);
    EXPECT_NE(alarms[1].find(L"full"), std::wstring::npos);
}

TEST_F(RecordFaults, RowsThatAreLostForGoodEndTheRefusal) {
    disk.FailAfter(0, SQLITE_FULL, true);
    while (Put()) {
    }
    disk.FailAfter(0, SQLITE_CORRUPT, true);
    while (writer.Lost() != taken + refused) {
        Sleep(1);
    }
    EXPECT_TRUE(disk.Work());
    EXPECT_TRUE(Put());
    writer.Finish();
    EXPECT_EQ(writer.Stored(), 1u);
}

TEST_F(RecordFaults, OneBadRowIsLostAlone) {
    first->Execute(
        "CREATE TRIGGER stop BEFORE INSERT ON event WHEN new.name = 'bad' BEGIN SELECT RAISE(ABORT, 'no'); END;"
        "BEGIN IMMEDIATE");  // the rows wait together
    for (const wchar_t* name : {L"a", L"b", L"bad", L"c", L"d"}) {
        EXPECT_TRUE(Put(name));
    }
    first->Execute("COMMIT");
    writer.Finish();
    EXPECT_EQ(writer.Stored(), 4u);
    EXPECT_EQ(writer.Lost(), 1u);
    ASSERT_EQ(alarms.size(), 1u);
    EXPECT_NE(alarms[0].find(L"records: 1 rows are lost: "), std::wstring::npos) << alarms[0].c_str();
    EXPECT_EQ(first->NumberOf("SELECT count(*) FROM event WHERE NAME <> 'bad'"), 4);
}

}  // namespace
}  // namespace wrb
