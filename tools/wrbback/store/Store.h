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

#include "SqliteDb.h"

namespace wrb {

// What stands in the scan table's "type" column is the number of a wrb::ScanType.

// Opens a file that CreateStore has made; throws CSqliteError for one that is missing, damaged, locked, of another
// program or of a newer version, and says which.
std::unique_ptr<CSqliteDb> OpenStore(const std::wstring& path);

// The same for a file that may not be there yet, or be empty.
std::unique_ptr<CSqliteDb> CreateStore(const std::wstring& path);

// Throws CSqliteError when pages of the file are damaged. Reads the whole file.
void VerifyStore(CSqliteDb& db, const std::wstring& path);

// A fixed number of connections to one file, lent to threads.
class CStorePool {
  public:
    CStorePool(const std::wstring& path, unsigned connections);

    class CLease {
      public:
        CLease(CStorePool& pool, std::unique_ptr<CSqliteDb> db) : m_pool(pool), m_db(std::move(db)) {}
        ~CLease() { m_pool.Return(std::move(m_db)); }
        CLease(const CLease&) = delete;
        CLease& operator=(const CLease&) = delete;
        CSqliteDb& Db() const { return *m_db; }

      private:
        CStorePool& m_pool;
        std::unique_ptr<CSqliteDb> m_db;
    };

    CLease Lend();  // waits for a free one

  private:
    void Return(std::unique_ptr<CSqliteDb> db);

    std::mutex m_lock;
    std::condition_variable m_returned;
    std::vector<std::unique_ptr<CSqliteDb>> m_free;
};

}  // namespace wrb
