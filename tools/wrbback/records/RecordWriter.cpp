#include "RecordWriter.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <exception>
#include <new>
#include <set>
#include <utility>

#include "Store.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kMostQueued = 500;
constexpr std::size_t kMostRowsOfStatement = 32;  // each statement costs a server two messages or more
constexpr std::chrono::seconds kLongestPut{10};
constexpr ULONGLONG kLastMilliseconds = 60'000;
constexpr std::chrono::milliseconds kRest{500};

// Errors that end by themselves, or once there is room on the disk, or the server is back.
bool MayPass(const std::exception& error) {
    const auto* const failure = dynamic_cast<const SqlError*>(&error);
    if (failure == nullptr) {
        return dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    }
    switch (failure->Failure()) {
        case SqlFailure::Busy:
        case SqlFailure::Full:
        case SqlFailure::Io:
        case SqlFailure::Memory:
        case SqlFailure::Conflict:
        case SqlFailure::CannotOpen:
        case SqlFailure::Disconnected:
            return true;
        default:
            return false;
    }
}

bool IsFull(const std::exception& error) {
    const auto* const failure = dynamic_cast<const SqlError*>(&error);
    return failure != nullptr && failure->Failure() == SqlFailure::Full;
}

void Tell(const RecordWriter::Note& note, uint64_t rows, const wchar_t* what, const std::wstring& why) noexcept {
    try {
        note(FormatWide(L"records: %u rows %s: %s", static_cast<unsigned>(rows), what, why.c_str()));
    } catch (const std::exception&) {
        // No memory for a note either. Rows that are lost are counted all the same.
    }
}

void AddTo(Tally& tally, std::span<const Record> rows) {
    for (const Record& row : rows) {
        ++tally[L"rows of " + Utf8ToWide(row.table->name)];
    }
}

// How many of the rows, from the first on, one statement takes. They are of one table, and a power of two: few
// statements are prepared.
std::size_t RowsOfStatement(std::span<const Record> rows) {
    const auto isOther = [first = rows.front().table](const Record& row) { return row.table != first; };
    const auto candidates = rows.first(std::min(rows.size(), kMostRowsOfStatement));
    return std::bit_floor(static_cast<std::size_t>(std::ranges::find_if(candidates, isOther) - candidates.begin()));
}

void Insert(SqlDb& db, std::span<const Record> rows) {
    SqlStatement insert = db.Use(InsertSql(*rows.front().table, rows.size()));
    int place = 0;
    for (const Record& row : rows) {
        for (const RecordValue& value : row.values) {
            ++place;
            std::visit([&](const auto& bound) { insert.Bind(place, bound); }, value);
        }
    }
    insert.Run();
}

}  // namespace

RecordWriter::RecordWriter(Options options)
    : m_options(std::move(options)), m_store(m_options.database, 1), m_thread([this] { Work(); }) {}

bool RecordWriter::Put(Record record) {
    std::unique_lock lock(m_lock);
    const auto settled = [this] { return m_refusing || m_queue.size() < kMostQueued; };
    if (!m_changed.wait_for(lock, kLongestPut, settled)) {
        m_why = L"the database has taken none for ten seconds";
        m_refusing = true;
    }
    if (!m_refusing) {
        m_queue.push_back(std::move(record));
        m_changed.notify_all();
        return true;
    }
    ++m_lost;
    const uint64_t rows = m_refused.Add();
    lock.unlock();
    TellRefused(rows);
    return false;
}

// Without the lock: the alarm writes to the log.
void RecordWriter::TellRefused(uint64_t rows) noexcept {
    if (rows == 0) {
        return;
    }
    try {
        std::unique_lock lock(m_lock);
        const std::wstring why = m_why;
        lock.unlock();
        Tell(m_options.alarm, rows, L"are refused", why);
    } catch (const std::exception&) {
        // No memory for the text. The rows are counted all the same.
    }
}

void RecordWriter::RefuseFromNowOn(const std::exception& error) {
    const std::lock_guard lock(m_lock);
    m_why = Utf8ToWide(error.what());
    m_refusing = true;
    m_changed.notify_all();
}

// And tells the rest of the refused rows.
void RecordWriter::TakeAgain() noexcept {
    {
        const std::lock_guard lock(m_lock);
        m_refusing = false;
    }
    m_changed.notify_all();
    TellRefused(m_refused.Rest());
}

void RecordWriter::Hurry() {
    uint64_t never = kNever;
    m_giveUpAt.compare_exchange_strong(never, GetTickCount64() + kLastMilliseconds);
}

void RecordWriter::Finish() {
    Hurry();
    {
        const std::lock_guard lock(m_lock);
        m_finishing = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    TellRefused(m_refused.Rest());
}

Tally RecordWriter::Waiting() {
    Tally waiting;
    {
        const std::lock_guard lock(m_lock);
        AddTo(waiting, m_underWay);
        AddTo(waiting, m_queue);
    }
    if (const uint64_t refused = m_refused.Rest(); refused != 0) {
        waiting[L"refused rows"] = refused;
    }
    return waiting;
}

void RecordWriter::Work() {
    for (;;) {
        Batch batch;
        {
            std::unique_lock lock(m_lock);
            m_changed.wait(lock, [this] { return m_finishing || !m_queue.empty(); });
            if (m_queue.empty()) {
                return;
            }
            batch.swap(m_queue);
            m_underWay = batch;
        }
        m_changed.notify_all();  // there is room again
        StoreOrLose(batch);
        const std::lock_guard lock(m_lock);
        m_underWay = {};
    }
}

void RecordWriter::StoreOrLose(const Batch& batch) {
    std::wstring why;
    if (Store(batch, why)) {
        return;
    }
    const auto isLost = [&](const Record& row) { return GetTickCount64() >= m_giveUpAt || !Store({&row, 1}, why); };
    if (const auto lost = std::ranges::count_if(batch, isLost); lost != 0) {
        m_lost += static_cast<uint64_t>(lost);
        Tell(m_options.alarm, static_cast<uint64_t>(lost), L"are lost", why);
    }
}

// All of the rows or, for the reason that `why` then tells, none of them.
bool RecordWriter::Store(std::span<const Record> rows, std::wstring& why) {
    bool noted = false;
    const auto noteWait = [&](const std::exception& error) {
        if (!std::exchange(noted, true)) {
            Tell(m_options.note, rows.size(), L"have to wait", Utf8ToWide(error.what()));
        }
    };
    for (;;) {
        try {
            m_store.Run([rows, this](SqlDb& db) { StoreOnce(db, rows); }, noteWait);
            m_stored += rows.size();
            TakeAgain();
            return true;
        } catch (const std::exception& error) {
            if (!MayPass(error) || GetTickCount64() >= m_giveUpAt) {
                TakeAgain();  // the next batch finds out whether the database takes records
                why = Utf8ToWide(error.what());
                return false;
            }
            noteWait(error);
            if (IsFull(error)) {
                RefuseFromNowOn(error);
            }
        }
        std::this_thread::sleep_for(kRest);
    }
}

void RecordWriter::StoreOnce(SqlDb& db, std::span<const Record> rows) const {
    SqlTransaction transaction(db);
    std::set<const RecordTable*> touched;
    while (!rows.empty()) {
        const std::size_t count = RowsOfStatement(rows);
        Insert(db, rows.first(count));
        touched.insert(rows.front().table);
        rows = rows.subspan(count);
    }
    for (const RecordTable* table : touched) {
        if (m_options.keep != 0) {
            KeepLatest(db, table->name, m_options.keep);
        }
    }
    transaction.Commit();
}

}  // namespace wrb
