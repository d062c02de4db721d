// A question from the agent's message to its answer, with the reference database server over a real database; and the
// rows of the log pool.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

#include "DbServer.h"
#include "PipeFixture.h"
#include "PipeWork.h"
#include "Ratio.h"
#include "RecordWriter.h"
#include "SampleAgent.h"
#include "SeedStore.h"
#include "Store.h"
#include "Text.h"

namespace wrb::bench {
namespace {

// The address of a database beside SQLite's; scripts/bench sets it.
const wchar_t* OtherStore() {
    return _wgetenv(L"WRB_STORE");
}

std::wstring SqliteStore() {
    const auto path = std::filesystem::temp_directory_path() / L"wrb_bench_agents.db";
    for (const wchar_t* suffix : {L"", L"-wal", L"-shm"}) {  // left by an interrupted run
        std::filesystem::remove(path.wstring() + suffix);
    }
    return path.wstring();
}

// Serves the sample agent from that database while it lives.
class StoreFixture {
  public:
    explicit StoreFixture(const std::wstring& address) {
        const std::string uid = WideToUtf8(kSampleUid);
        StoreSeed(*CreateStore(address), ParseSeed(R"({"agents": [{"uid": ")" + uid + R"(", "scan": {}}]})"));
        DbServerOptions options;
        options.database = address;
        m_server = std::make_unique<DbServer>(options);
        EndDatabase();
        m_serves = m_server->Start();
    }
    bool Serves() const { return m_serves; }

  private:
    std::unique_ptr<DbServer> m_server;
    bool m_serves = false;
};

void Measure(benchmark::State& state, const std::wstring& address) {
    NeedSink();
    const StoreFixture store(address);
    if (!store.Serves()) {
        state.SkipWithError("the database server's pipe is taken");
    }
    for (auto _ : state) {
        if (!GetManualScan()) {
            state.SkipWithError("a call failed");
        }
    }
}

void OverSqlite(benchmark::State& state) {
    static const std::wstring address = SqliteStore();
    Measure(state, address);
}

void OverOtherStore(benchmark::State& state) {
    Measure(state, OtherStore());
}

void FromMemory(benchmark::State& state) {
    NeedSink();
    NeedDatabase();
    for (auto _ : state) {
        if (!GetManualScan()) {
            state.SkipWithError("a call failed");
        }
    }
}

constexpr std::size_t kRows = 1000;

Record SampleRow() {
    return {&kEventRecords, {L"2024-01-31 23:59:59", L"service", L"name", L"fields of a usual length"}};
}

void RowsByBatches(benchmark::State& state) {
    CreateStore(OtherStore());
    RecordWriter writer({OtherStore(), 0, [](const std::wstring&) {}, [](const std::wstring&) {}});
    while (state.KeepRunningBatch(kRows)) {
        const uint64_t wanted = writer.Stored() + kRows;
        for (std::size_t i = 0; i < kRows; ++i) {
            writer.Put(SampleRow());
        }
        while (writer.Stored() < wanted && writer.Lost() == 0) {
            Sleep(1);
        }
    }
    if (writer.Lost() != 0) {
        state.SkipWithError("rows are lost");
    }
}

void RowsOneByOne(benchmark::State& state) {
    const auto db = CreateStore(OtherStore());
    const std::string sql = InsertSql(kEventRecords, 1);
    const Record row = SampleRow();
    for (auto _ : state) {
        SqlTransaction transaction(*db);
        SqlStatement insert = db->Use(sql);
        for (std::size_t i = 0; i < row.values.size(); ++i) {
            insert.Bind(static_cast<int>(i) + 1, std::get<std::wstring>(row.values[i]));
        }
        insert.Run();
        transaction.Commit();
    }
}

}  // namespace

void AddStoreBenchmarks() {
    AddRatio("CMDHL_GET_MS_CFG over SQLite", OverSqlite, "the same, answered from memory", FromMemory, Goal::AtMost,
             1.5);
    if (OtherStore() == nullptr) {
        std::fputs("the rows over PostgreSQL are left out: WRB_STORE names no database\n", stderr);
        return;
    }
    AddRatio("CMDHL_GET_MS_CFG over PostgreSQL", OverOtherStore, "the same over SQLite", OverSqlite, Goal::AtMost, 2);
    AddRatio("log row over PostgreSQL, in batches", RowsByBatches, "a transaction for each row", RowsOneByOne,
             Goal::AtMost, 0.67);
}

}  // namespace wrb::bench
