// A question from the agent's message to its answer, with the reference database server over a real database.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "DbServer.h"
#include "PipeFixture.h"
#include "PipeWork.h"
#include "Ratio.h"
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

}  // namespace

void AddStoreBenchmarks() {
    AddRatio("CMDHL_GET_MS_CFG over SQLite", OverSqlite, "the same, answered from memory", FromMemory, Goal::AtMost,
             1.5);
    if (OtherStore() == nullptr) {
        std::fputs("CMDHL_GET_MS_CFG over PostgreSQL is left out: WRB_STORE names no database\n", stderr);
        return;
    }
    AddRatio("CMDHL_GET_MS_CFG over PostgreSQL", OverOtherStore, "the same over SQLite", OverSqlite, Goal::AtMost, 2);
}

}  // namespace wrb::bench
