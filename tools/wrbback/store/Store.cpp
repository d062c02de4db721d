#include "Store.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "BundleTables.h"
#include "StoreSchema.h"
#include "Text.h"

namespace wrb {
namespace {

[[noreturn]] void Refuse(SqlFailure failure, const std::wstring& path, const std::string& why) {
    throw SqlError(failure, WideToUtf8(path) + ": " + why);
}

// For a database that is not there, or is empty.
enum class Missing : uint8_t { kRefused, kMade };

// What SQLite says about a file that it cannot use is short; these cases come up most, so they get a sentence.
[[noreturn]] void Explain(const SqlError& error, const std::wstring& path) {
    switch (error.Failure()) {
        case SqlFailure::NotADatabase:
            Refuse(error.Failure(), path, "is not a database");
        case SqlFailure::Busy:
            Refuse(error.Failure(), path, "is locked by another program");
        case SqlFailure::Damaged:
            Refuse(error.Failure(), path, "is damaged");
        default:
            throw error;
    }
}

// True when the file is ours and of this version; false when it is empty.
bool IsOurs(SqlDb& db, const std::wstring& path) {
    const int64_t application = db.NumberOf("PRAGMA application_id");
    const int64_t version = db.NumberOf("PRAGMA user_version");
    if (application == 0 && version == 0 && db.NumberOf("SELECT count(*) FROM sqlite_master") == 0) {
        return false;
    }
    if (application != kStoreApplicationId) {
        Refuse(SqlFailure::Other, path, "is a database of another program");
    }
    if (version != kStoreVersion) {
        Refuse(SqlFailure::Other, path,
               "has version " + std::to_string(version) + ", this program knows " + std::to_string(kStoreVersion));
    }
    return true;
}

void CreateTables(SqlDb& db) {
    db.Execute("PRAGMA encoding = 'UTF-16le'");
    db.Execute("PRAGMA journal_mode = WAL");
    SqlTransaction transaction(db);
    db.Execute(kStoreSchema);
    db.Execute(BundleTablesSql());
    transaction.Commit();
}

std::unique_ptr<SqlDb> Open(const std::wstring& path, Missing missing) {
    try {
        std::error_code ignored;
        if (missing == Missing::kRefused && !std::filesystem::exists(path, ignored)) {
            Refuse(SqlFailure::CannotOpen, path,
                   "there is no such file; make it with: wrbback seed AGENTS.json --db FILE");
        }
        auto db = std::make_unique<SqlDb>(path);
        db->Execute("PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF; PRAGMA synchronous = NORMAL");
        if (!IsOurs(*db, path)) {
            if (missing == Missing::kRefused) {
                Refuse(SqlFailure::Other, path, "is empty; fill it with: wrbback seed AGENTS.json --db FILE");
            }
            CreateTables(*db);
        }
        return db;
    } catch (const SqlError& error) {
        Explain(error, path);
    }
}

}  // namespace

std::unique_ptr<SqlDb> OpenStore(const std::wstring& path) {
    return Open(path, Missing::kRefused);
}
std::unique_ptr<SqlDb> CreateStore(const std::wstring& path) {
    return Open(path, Missing::kMade);
}

void VerifyStore(SqlDb& db, const std::wstring& path) {
    try {
        SqlStatement check = db.Use("PRAGMA quick_check(1)");
        if (check.Step() && check.Text(0) != L"ok") {
            Refuse(SqlFailure::Damaged, path, "is damaged: " + WideToUtf8(check.Text(0)));
        }
    } catch (const SqlError& error) {
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
    std::unique_ptr<SqlDb> db = std::move(m_free.back());
    m_free.pop_back();
    return {*this, std::move(db)};
}

void StorePool::Return(std::unique_ptr<SqlDb> db) {
    {
        const std::lock_guard lock(m_lock);
        m_free.push_back(std::move(db));
    }
    m_returned.notify_one();
}

}  // namespace wrb
