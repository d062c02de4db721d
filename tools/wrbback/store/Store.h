// The database of the reference back end: its tables, and how it is opened.
//
// A SQLite file is in write-ahead mode: readers see the last commit and never wait for a writer, so that a file that is
// being served can be seeded and looked into. Texts are stored as UTF-16. A commit survives the end of the process at
// once, and a loss of power up to SQLite's last checkpoint. Any other engine is reached by ODBC.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Clock.h"
#include "SqlDb.h"

namespace wrb {

// The scan table's column "type" holds the number of a wrb::ScanType.

// Opens a database that CreateStore has made, by its address (SqlAddress.h); one of an older version is brought
// forward. Throws SqlError for one that is missing, damaged, locked, of another program or of a newer version, and says
// which.
std::unique_ptr<SqlDb> OpenStore(const std::wstring& address);

// The same for a database that may not be there yet, or be empty.
std::unique_ptr<SqlDb> CreateStore(const std::wstring& address);

// Brings a database of an older version forward, and tells from which version to which. Throws as OpenStore does.
struct StoreMigration {
    int64_t from;
    int64_t to;
};
std::optional<StoreMigration> MigrateStore(const std::wstring& address);

// Throws SqlError when a file of the database is damaged. Reads it whole.
void VerifyStore(SqlDb& db, const std::wstring& address);

// Deletes all but the latest `keep` rows of a table whose ids count up.
void KeepLatest(SqlDb& db, const std::string& table, int64_t keep);

// A number of connections to one database, lent to threads. A connection that is lost is made anew when it is needed
// next. While that fails, it is tried after 100 milliseconds, then after twice as long each time, up to five seconds;
// in between, Lend fails at once with the last error.
class StorePool {
  public:
    // Connects. Throws SqlError, see OpenStore.
    StorePool(const std::wstring& address, unsigned connections, const IClock& clock = SystemClock());

    class Lease {
      public:
        Lease(StorePool& pool, std::unique_ptr<SqlDb> db) : m_pool(pool), m_db(std::move(db)) {}
        ~Lease() { m_pool.Return(std::move(m_db)); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        SqlDb& Db() const { return *m_db; }

        // Work with the connection has failed. True: nothing of it has been done, and it may succeed when it is tried
        // again.
        bool MayRepeat(const SqlError& error);

      private:
        StorePool& m_pool;
        std::unique_ptr<SqlDb> m_db;
    };

    Lease Lend();  // waits for a free one; throws SqlError after a minute

    // Calls work(db) and returns its result; a second time when the first may be repeated.
    template <typename Work>
    auto Run(const Work& work) {
        for (bool again = true;; again = false) {
            Lease lease = Lend();
            try {
                return work(lease.Db());
            } catch (const SqlError& error) {
                if (!lease.MayRepeat(error) || !again) {
                    throw;
                }
            }
        }
    }

  private:
    std::unique_ptr<SqlDb> Connect();
    void RefuseDuringPause();
    std::unique_ptr<SqlDb> TryToOpen();
    void Return(std::unique_ptr<SqlDb> db);
    void DropFree();

    const std::wstring m_address;
    const IClock& m_clock;
    std::mutex m_lock;
    std::condition_variable m_returned;
    std::vector<std::unique_ptr<SqlDb>> m_free;  // null: to be made
    uint32_t m_pause = 0;                        // milliseconds between two tries; 0: the last one succeeded
    uint32_t m_tried = 0;                        // when, on the tick clock
    std::string m_failure;                       // what it said
};

}  // namespace wrb
