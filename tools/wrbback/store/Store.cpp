#include "Store.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "BundleTables.h"
#include "Dialect.h"
#include "SqlAddress.h"
#include "StoreSchema.h"
#include "Text.h"

namespace wrb {
namespace {

[[noreturn]] void Refuse(SqlFailure failure, const std::wstring& address, const std::string& why) {
    throw SqlError(failure, ParseSqlAddress(address).name + ": " + why);
}

// For a database that is not there, or is empty.
enum class Missing : uint8_t { kRefused, kMade };

struct OpenedStore {
    std::unique_ptr<SqlDb> db;
    std::optional<StoreMigration> migration;
};

// What SQLite says about a file that it cannot use is short; these cases come up most, so they get a sentence.
[[noreturn]] void Explain(const SqlError& error, const std::wstring& address) {
    switch (error.Failure()) {
        case SqlFailure::NotADatabase:
            Refuse(error.Failure(), address, "is not a database");
        case SqlFailure::Busy:
            Refuse(error.Failure(), address, "is locked by another program");
        case SqlFailure::Damaged:
            Refuse(error.Failure(), address, "is damaged");
        default:
            throw error;
    }
}

std::set<std::wstring> TableNames(SqlDb& db) {
    std::set<std::wstring> names;
    SqlStatement read = db.Use(DialectOf(db.Engine()).tableNames);
    while (read.Step()) {
        names.insert(read.Text(0));
    }
    return names;
}

// Throws SqlError when the tables are not ours.
int64_t VersionOf(SqlDb& db, const std::wstring& address) {
    const Dialect& dialect = DialectOf(db.Engine());
    int64_t application = 0;
    try {
        application = db.NumberOf(dialect.application);
    } catch (const SqlError& error) {
        if (error.Failure() != SqlFailure::Other) {  // else our table is not there
            throw;
        }
    }
    if (application != kStoreApplicationId) {
        Refuse(SqlFailure::Other, address, "is a database of another program");
    }
    const int64_t version = db.NumberOf(dialect.version);
    if (version < Migrations().front().from || version > kStoreVersion) {
        Refuse(SqlFailure::Other, address,
               "has version " + std::to_string(version) + ", this program knows " + std::to_string(kStoreVersion));
    }
    return version;
}

void WriteVersion(SqlDb& db, int64_t version) {
    db.Execute(DialectOf(db.Engine()).writeVersion + std::to_string(version));
}

void CreateTables(SqlDb& db) {
    const Dialect& dialect = DialectOf(db.Engine());
    db.Execute(dialect.prepareFile);
    SqlTransaction transaction(db);
    db.Execute(dialect.create);
    db.Execute(Spelled(db.Engine(), kStoreSchema));
    for (const BundleTable& table : BundleTables()) {
        db.Execute(Spelled(db.Engine(), table.create));
    }
    WriteVersion(db, kStoreVersion);
    transaction.Commit();
}

void Migrate(SqlDb& db) {
    SqlTransaction transaction(db);
    int64_t version = db.NumberOf(DialectOf(db.Engine()).version);  // another process may have been faster
    for (const Migration& step : Migrations()) {
        if (step.from == version) {
            db.Execute(Spelled(db.Engine(), step.sql));
            ++version;
        }
    }
    WriteVersion(db, version);
    transaction.Commit();
}

// For the bundles that came after the database had been made.
void AddBundleTables(SqlDb& db, const std::set<std::wstring>& present) {
    for (const BundleTable& table : BundleTables()) {
        if (!present.contains(Utf8ToWide(table.name))) {
            db.Execute(Spelled(db.Engine(), table.create));
        }
    }
}

OpenedStore OpenHere(const std::wstring& address, Missing missing) {
    try {
        const SqlAddress parsed = ParseSqlAddress(address);
        std::error_code ignored;
        if (missing == Missing::kRefused && !parsed.isOdbc && !std::filesystem::exists(parsed.target, ignored)) {
            Refuse(SqlFailure::CannotOpen, address,
                   "there is no such file; make it with: wrbback seed AGENTS.json --store STORE, or name another one "
                   "with --store");
        }
        auto db = std::make_unique<SqlDb>(address);
        const Dialect& dialect = DialectOf(db->Engine());
        db->Execute(dialect.setUp);
        if (dialect.limit != nullptr) {
            db->Execute(dialect.limit + std::to_string(parsed.statementSeconds * 1000));
        }
        const std::set<std::wstring> tables = TableNames(*db);
        if (tables.empty() && missing == Missing::kRefused) {
            Refuse(SqlFailure::Other, address, "is empty; fill it with: wrbback seed AGENTS.json --store STORE");
        }
        if (tables.empty()) {
            CreateTables(*db);
            return {std::move(db), std::nullopt};
        }
        std::optional<StoreMigration> migration;
        if (const int64_t version = VersionOf(*db, address); version != kStoreVersion) {
            Migrate(*db);
            migration = {version, kStoreVersion};
        }
        AddBundleTables(*db, tables);
        return {std::move(db), migration};
    } catch (const SqlError& error) {
        Explain(error, address);
    }
}

// An engine that hangs holds the thread that waits for it. The thread is given up, and ends when the engine goes on.
OpenedStore OpenOnThread(const std::wstring& address, Missing missing, std::chrono::seconds limit) {
    constexpr unsigned kMostThreads = 128;  // one for each connection, and as many again that are given up
    static std::atomic<unsigned> threads = 0;
    if (threads >= kMostThreads) {
        Refuse(SqlFailure::CannotOpen, address, "too many connections wait for an answer");
    }
    std::packaged_task<OpenedStore()> open([address, missing] { return OpenHere(address, missing); });
    std::future<OpenedStore> opened = open.get_future();
    std::thread([open = std::move(open)]() mutable {
        ++threads;
        open();
        --threads;
    }).detach();
    if (opened.wait_for(limit) == std::future_status::timeout) {
        Refuse(SqlFailure::CannotOpen, address, "no answer for " + std::to_string(limit.count()) + " seconds");
    }
    return opened.get();
}

OpenedStore Open(const std::wstring& address, Missing missing) {
    constexpr unsigned kMoreSeconds = 5;  // in which an engine that works ends the statement itself
    const SqlAddress parsed = ParseSqlAddress(address);
    if (!parsed.wrong.empty()) {
        throw std::invalid_argument(parsed.name + ": " + parsed.wrong);
    }
    const std::chrono::seconds limit(parsed.loginSeconds + parsed.statementSeconds + kMoreSeconds);
    return parsed.isOdbc ? OpenOnThread(address, missing, limit) : OpenHere(address, missing);
}

}  // namespace

std::unique_ptr<SqlDb> OpenStore(const std::wstring& address) {
    return Open(address, Missing::kRefused).db;
}
std::unique_ptr<SqlDb> CreateStore(const std::wstring& address) {
    return Open(address, Missing::kMade).db;
}

std::optional<StoreMigration> MigrateStore(const std::wstring& address) {
    return Open(address, Missing::kRefused).migration;
}

void VerifyStore(SqlDb& db, const std::wstring& address, VerifyDepth depth) {
    const Dialect& dialect = DialectOf(db.Engine());
    const char* const sql = depth == VerifyDepth::kFiles ? dialect.check : dialect.checkIndexes;
    if (sql == nullptr) {
        return;
    }
    std::wstring found;
    try {
        SqlStatement check = db.Use(sql);
        found = check.Step() ? check.Text(0) : L"";
    } catch (const SqlError& error) {
        Explain(error, address);
    }
    if (found != L"ok") {
        Refuse(SqlFailure::Damaged, address, "is damaged: " + WideToUtf8(found));
    }
}

// The newest row tells which are too old. Ids have gaps where a transaction was rolled back; then fewer rows stay.
void KeepLatest(SqlDb& db, const std::string& table, int64_t keep) {
    SqlStatement trim = db.Use("DELETE FROM " + table + " WHERE id <= (SELECT max(id) FROM " + table + ") - @keep");
    trim.Bind("@keep", keep).Run();
}

}  // namespace wrb
