#include "StorePool.h"

#include <algorithm>
#include <exception>

#include "SqlAddress.h"
#include "Store.h"

namespace wrb {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstPause{100};
constexpr milliseconds kLongestPause{5000};
constexpr std::chrono::seconds kLongestLend{5};
constexpr std::chrono::seconds kBeyondStatement{5};

milliseconds LimitOf(const std::wstring& address) {
    return std::chrono::seconds(ParseSqlAddress(address).statementSeconds) + kBeyondStatement;
}

}  // namespace

StorePool::StorePool(const std::wstring& address, unsigned connections)
    : StorePool(address, connections, LimitOf(address)) {}

StorePool::StorePool(const std::wstring& address, unsigned connections, milliseconds limit)
    : m_address(address), m_limit(limit), m_connections(connections) {
    for (unsigned i = 0; i < connections; ++i) {
        m_free.push_back(OpenStore(address));
    }
    m_threads.Start(1, [this] { Watch(); });
}

SqlError StorePool::Failure(const std::string& why) const {
    return {SqlFailure::Busy, ParseSqlAddress(m_address).name + ": " + why};
}

StorePool::Loans::iterator StorePool::Borrow(OnHeld onHeld) {
    std::unique_lock lock(m_lock);
    const auto isSettled = [this] { return !m_free.empty() || m_held == m_connections; };
    if (!m_changed.wait_for(lock, kLongestLend, isSettled)) {
        throw Failure("all connections are in use");
    }
    if (m_free.empty()) {
        throw Failure("the database holds all connections");
    }
    const auto loan = m_lent.emplace(m_lent.end());
    loan->onHeld = std::move(onHeld);
    loan->due = Clock::now() + m_limit;
    loan->db = std::move(m_free.back());
    m_free.pop_back();
    return loan;
}

void StorePool::Return(Loans::iterator loan) noexcept {
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [loan] { return !loan->isTelling; });
        m_held -= loan->isHeld ? 1 : 0;
        m_free.push_back(std::move(loan->db));  // there is room: it has been there before
        m_lent.erase(loan);
    }
    m_changed.notify_all();
}

std::unique_ptr<SqlDb> StorePool::Connect() {
    RefuseDuringPause();
    auto db = TryToOpen();
    const std::lock_guard lock(m_lock);
    m_pause = milliseconds(0);
    return db;
}

void StorePool::RefuseDuringPause() {
    const std::lock_guard lock(m_lock);
    if (Clock::now() < m_tried + m_pause) {
        throw SqlError(SqlFailure::Disconnected, m_failure);
    }
}

// Whatever is wrong with the database now, it was in order before and may be so again.
std::unique_ptr<SqlDb> StorePool::TryToOpen() {
    try {
        return OpenStore(m_address);
    } catch (const SqlError& error) {
        const std::lock_guard lock(m_lock);
        m_tried = Clock::now();
        m_pause = std::clamp(m_pause * 2, kFirstPause, kLongestPause);
        m_failure = error.what();
        throw SqlError(SqlFailure::Disconnected, m_failure);
    }
}

// Closing a connection may wait for the engine, so it happens without the lock.
void StorePool::DropFree() {
    std::vector<std::unique_ptr<SqlDb>> dropped(m_connections);
    const std::lock_guard lock(m_lock);
    std::ranges::swap_ranges(m_free, dropped);
}

// A loan that begins during a wait is due after its end: all have the same time.
void StorePool::Watch() {
    const auto isNext = [](const Loan& loan) { return !loan.isHeld; };
    std::unique_lock lock(m_lock);
    Clock::time_point next = Clock::now() + m_limit;
    while (!m_ending.wait_until(lock, next, [this] { return m_isEnding; })) {
        const auto loan = std::ranges::find_if(m_lent, isNext);
        next = loan == m_lent.end() ? Clock::now() + m_limit : loan->due;
        if (loan != m_lent.end() && Clock::now() >= loan->due) {
            TellHeld(lock, *loan);
        }
    }
}

// The loan stays as long as its borrower is being told.
void StorePool::TellHeld(std::unique_lock<std::mutex>& lock, Loan& loan) {
    ++m_held;
    loan.isHeld = true;
    loan.isTelling = true;
    lock.unlock();
    m_changed.notify_all();
    try {
        if (loan.onHeld) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(m_limit).count();
            loan.onHeld(Failure("no answer for " + std::to_string(seconds) + " seconds"));
        }
    } catch (const std::exception&) {
        // No memory for a text. The borrower goes on waiting.
    }
    lock.lock();
    loan.isTelling = false;
    m_changed.notify_all();
}

StorePool::Lease::Lease(StorePool& pool, OnHeld onHeld) : Lease(pool, pool.Borrow(std::move(onHeld))) {
    if (!m_loan->db) {
        m_loan->db = m_pool.Connect();
    }
}

SqlDb& StorePool::Lease::Db() const {
    return *m_loan->db;
}

bool StorePool::Lease::MayRepeat(const SqlError& error) {
    switch (error.Failure()) {
        case SqlFailure::Disconnected: {
            const bool nothingDone = !m_loan->db->CommitIsOpen();
            m_loan->db.reset();
            m_pool.DropFree();  // a server that has gone has left them all
            return nothingDone;
        }
        case SqlFailure::Io:
        case SqlFailure::CannotOpen:
            m_loan->db.reset();  // when a file that was away is back, its open handles are still of no use
            return false;
        case SqlFailure::Conflict:
        case SqlFailure::Constraint:  // both may have made the same row
            return true;
        default:
            return false;
    }
}

}  // namespace wrb
