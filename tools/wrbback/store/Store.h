// The database file of the reference back end: its tables, and how it is opened.
//
// All data is in one SQLite file in write-ahead mode: readers see the last commit and never wait for a writer, so that
// a file that is being served can be seeded and looked into. Texts are stored as UTF-16. A commit survives the end of
// the process at once, and a loss of power up to SQLite's last checkpoint.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "SqlDb.h"

namespace wrb {

// The scan table's column "type" holds the number of a wrb::ScanType.

// Opens a file that CreateStore has made; throws SqlError for one that is missing, damaged, locked, of another
// program or of a newer version, and says which.
std::unique_ptr<SqlDb> OpenStore(const std::wstring& path);

// The same for a file that may not be there yet, or be empty.
std::unique_ptr<SqlDb> CreateStore(const std::wstring& path);

// Throws SqlError when pages of the file are damaged. Reads the whole file.
void VerifyStore(SqlDb& db, const std::wstring& path);

// A fixed number of connections to one file, lent to threads.
class StorePool {
  public:
    StorePool(const std::wstring& path, unsigned connections);

    class Lease {
      public:
        Lease(StorePool& pool, std::unique_ptr<SqlDb> db) : m_pool(pool), m_db(std::move(db)) {}
        ~Lease() { m_pool.Return(std::move(m_db)); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        SqlDb& Db() const { return *m_db; }

      private:
        StorePool& m_pool;
        std::unique_ptr<SqlDb> m_db;
    };

    Lease Lend();  // waits for a free one

  private:
    void Return(std::unique_ptr<SqlDb> db);

    std::mutex m_lock;
    std::condition_variable m_returned;
    std::vector<std::unique_ptr<SqlDb>> m_free;
};

}  // namespace wrb
