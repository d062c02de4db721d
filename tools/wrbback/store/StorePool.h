// A number of connections to one database, lent to threads.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "SqlDb.h"
#include "WorkerThreads.h"

namespace wrb {

// A connection that is lost is made anew when it is needed next. While that fails, it is tried after 100 milliseconds,
// then after twice as long each time, up to five seconds; in between, Lend fails at once with the last error.
//
// An engine that hangs holds the thread that waits for it, and no driver can end this wait. The pool watches for that:
// a connection that is lent for longer than the limit is held. Its borrower is told. The pool makes no other connection
// in its place, so the engine holds as many threads as there are connections at most. While it holds all of them, Lend
// fails at once. A held connection that comes back is lent again.
class StorePool {
  public:
    // Called once a loan, on the pool's own thread, while the borrower waits for the engine. May take its time, but
    // delays the calls for other loans. What it throws is lost.
    using OnHeld = std::function<void(const SqlError& why)>;

    // Connects. Throws SqlError, see OpenStore. The limit is what the address allows a statement, and five seconds, in
    // which an engine that works ends the statement itself.
    StorePool(const std::wstring& address, unsigned connections);
    StorePool(const std::wstring& address, unsigned connections, std::chrono::milliseconds limit);
    ~StorePool() { m_threads.Finish(m_lock, m_isEnding, m_ending); }
    StorePool(const StorePool&) = delete;
    StorePool& operator=(const StorePool&) = delete;

  private:
    using Clock = std::chrono::steady_clock;
    struct Loan {
        std::unique_ptr<SqlDb> db;
        OnHeld onHeld;
        Clock::time_point due;
        bool isHeld = false;
        bool isTelling = false;  // onHeld runs
    };
    using Loans = std::list<Loan>;

  public:
    class Lease {
      public:
        Lease(StorePool& pool, OnHeld onHeld);
        ~Lease() { m_pool.Return(m_loan); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        SqlDb& Db() const;

        // Work with the connection has failed. True: nothing of it has been done, and it may succeed when it is tried
        // again.
        bool MayRepeat(const SqlError& error);

      private:
        Lease(StorePool& pool, Loans::iterator loan) : m_pool(pool), m_loan(loan) {}

        StorePool& m_pool;
        const Loans::iterator m_loan;
    };

    // Waits for a free connection. Throws SqlError after five seconds, and at once while all are held.
    Lease Lend(OnHeld onHeld = {}) { return {*this, std::move(onHeld)}; }

    // Calls work(db) and returns its result; a second time when the first may be repeated. `onHeld` is called at most
    // once each time, and never after the return.
    template <typename Work>
    auto Run(const Work& work, const OnHeld& onHeld = {}) {
        for (bool again = true;; again = false) {
            Lease lease = Lend(onHeld);
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
    SqlError Failure(const std::string& why) const;
    Loans::iterator Borrow(OnHeld onHeld);
    void Return(Loans::iterator loan) noexcept;
    std::unique_ptr<SqlDb> Connect();
    void RefuseDuringPause();
    std::unique_ptr<SqlDb> TryToOpen();
    void DropFree();
    void Watch();
    void TellHeld(std::unique_lock<std::mutex>& lock, Loan& loan);

    const std::wstring m_address;
    const std::chrono::milliseconds m_limit;
    std::mutex m_lock;
    std::condition_variable m_changed;           // a connection has come back, is held, or its borrower has been told
    std::vector<std::unique_ptr<SqlDb>> m_free;  // null: to be made
    Loans m_lent;                                // in the order of their times
    std::size_t m_connections = 0;
    std::size_t m_held = 0;
    std::chrono::milliseconds m_pause{0};  // between two tries to connect; 0: the last one succeeded
    Clock::time_point m_tried;
    std::string m_failure;  // what it said
    std::condition_variable m_ending;
    bool m_isEnding = false;
    WorkerThreads m_threads;  // last: one, which watches
};

}  // namespace wrb
