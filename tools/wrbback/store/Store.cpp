#include "Store.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "BundleTables.h"
#include "StoreSchema.h"
#include "Text.h"

namespace wrb {
namespace {

[[noreturn]] void Refuse(int code, const std::wstring& path, const std::string& why) {
    throw SqliteError(code, WideToUtf8(path) + ": " + why);
}

// What SQLite says about a file that it cannot use is short; these cases come up most, so they get a sentence.
[[noreturn]] void Explain(const SqliteError& error, const std::wstring& path) {
    switch (error.Code()) {
        case SQLITE_NOTADB:
            Refuse(SQLITE_NOTADB, path, "is not a database");
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            Refuse(SQLITE_BUSY, path, "is locked by another program");
        case SQLITE_CORRUPT:
            Refuse(SQLITE_CORRUPT, path, "is damaged");
        default:
            throw error;
    }
}

// True when the file is ours and of this version; false when it is empty.
bool IsOurs(SqliteDb& db, const std::wstring& path) {
    const int64_t application = db.NumberOf("PRAGMA application_id");
    const int64_t version = db.NumberOf("PRAGMA user_version");
    if (application == 0 && version == 0 && db.NumberOf("SELECT count(*) FROM sqlite_master") == 0) {
        return false;
    }
    if (application != kStoreApplicationId) {
        Refuse(SQLITE_ERROR, path, "is a database of another program");
    }
    if (version != kStoreVersion) {
        Refuse(SQLITE_ERROR, path,
               "has version " + std::to_string(version) + ", this program knows " + std::to_string(kStoreVersion));
    }
    return true;
}

void CreateTables(SqliteDb& db) {
    db.Execute("PRAGMA encoding = 'UTF-16le'");
    db.Execute("PRAGMA journal_mode = WAL");
    SqliteTransaction transaction(db);
    db.Execute(kStoreSchema);
    db.Execute(BundleTablesSql().c_str());
    transaction.Commit();
}

std::unique_ptr<SqliteDb> Open(const std::wstring& path, SqliteDb::Open mode) {
    try {
        std::error_code ignored;
        if (mode == SqliteDb::Open::kReadWrite && !std::filesystem::exists(path, ignored)) {
            Refuse(SQLITE_CANTOPEN, path, "there is no such file; make it with: wrbback seed AGENTS.json --db FILE");
        }
        auto db = std::make_unique<SqliteDb>(path, mode);
        db->Execute("PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF; PRAGMA synchronous = NORMAL");
        if (!IsOurs(*db, path)) {
            if (mode == SqliteDb::Open::kReadWrite) {
                Refuse(SQLITE_ERROR, path, "is empty; fill it with: wrbback seed AGENTS.json --db FILE");
            }
            CreateTables(*db);
        }
        return db;
    } catch (const SqliteError& error) {
        Explain(error, path);
    }
}

}  // namespace

std::unique_ptr<SqliteDb> OpenStore(const std::wstring& path) {
    return Open(path, SqliteDb::Open::kReadWrite);
}
std::unique_ptr<SqliteDb> CreateStore(const std::wstring& path) {
    return Open(path, SqliteDb::Open::kCreate);
}

void VerifyStore(SqliteDb& db, const std::wstring& path) {
    try {
        SqliteStatement check = db.Use("PRAGMA quick_check(1)");
        if (check.Step() && check.Text(0) != L"ok") {
            Refuse(SQLITE_CORRUPT, path, "is damaged: " + WideToUtf8(check.Text(0)));
        }
    } catch (const SqliteError& error) {
        Explain(error, path);
    }
}

StorePool::StorePool(const std::wstring& path, unsigned connections) {
    for (unsigned i = 0; i < connections; ++i) {
        m_free.push_back(OpenStore(path));
    }
}

StorePool::Lease StorePool::Lend() {
    std::unique_lock lock(m_lock);
    m_returned.wait(lock, [this] { return !m_free.empty(); });
    std::unique_ptr<SqliteDb> db = std::move(m_free.back());
    m_free.pop_back();
    return {*this, std::move(db)};
}

void StorePool::Return(std::unique_ptr<SqliteDb> db) {
    {
        const std::lock_guard lock(m_lock);
        m_free.push_back(std::move(db));
    }
    m_returned.notify_one();
}

}  // namespace wrb
