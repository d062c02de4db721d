#include "RecordWriter.h"

#include <windows.h>

#include <chrono>
#include <exception>
#include <new>
#include <set>
#include <utility>

#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kMostQueued = 500;
constexpr std::chrono::seconds kLongestPut{10};
constexpr ULONGLONG kLastMilliseconds = 60'000;
constexpr ULONGLONG kTellMilliseconds = 60'000;
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

void Bind(SqlStatement& statement, const char* column, const RecordValue& value) {
    const std::string name = std::string(":") + column;
    std::visit([&](const auto& bound) { statement.Bind(name.c_str(), bound); }, value);
}

void Insert(SqlDb& db, const Record& record) {
    SqlStatement insert = db.Use(InsertSql(*record.table));
    for (std::size_t i = 0; i < record.values.size(); ++i) {
        Bind(insert, record.table->columns[i].name, record.values[i]);
    }
    insert.Run();
}

}  // namespace

RecordWriter::RecordWriter(Options options)
    : m_options(std::move(options)), m_store(m_options.database, 1), m_thread([this] { Work(); }) {}

bool RecordWriter::Put(Record record) {
    {
        std::unique_lock lock(m_lock);
        const auto settled = [this] { return !m_refusal.empty() || m_queue.size() < kMostQueued; };
        if (!m_changed.wait_for(lock, kLongestPut, settled)) {
            m_refusal = L"the database has taken none for ten seconds";
        }
        if (!m_refusal.empty()) {
            CountRefused();
            return false;
        }
        m_queue.push_back(std::move(record));
    }
    m_changed.notify_all();
    return true;
}

// With the lock, as the next one.
void RecordWriter::CountRefused() noexcept {
    ++m_lost;
    ++m_refused;
    if (GetTickCount64() >= m_tellAfter) {
        TellRefused();
    }
}

void RecordWriter::TellRefused() noexcept {
    m_tellAfter = GetTickCount64() + kTellMilliseconds;
    Tell(m_options.alarm, std::exchange(m_refused, 0), L"are refused", m_refusal);
}

// No error: records are taken again, and the rest of the refused ones is told.
void RecordWriter::SetRefusal(const std::exception* error) {
    {
        const std::lock_guard lock(m_lock);
        if (error == nullptr && m_refused != 0) {
            TellRefused();
        }
        m_refusal = error != nullptr ? Utf8ToWide(error->what()) : std::wstring();
    }
    m_changed.notify_all();
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
        }
        m_changed.notify_all();  // there is room again
        StoreOrLose(batch);
    }
}

void RecordWriter::StoreOrLose(const Batch& batch) {
    for (bool noted = false;;) {
        try {
            m_store.Run([&batch, this](SqlDb& db) { StoreOnce(db, batch); });
            m_stored += batch.size();
            SetRefusal(nullptr);
            return;
        } catch (const std::exception& error) {
            const bool again = MayPass(error) && GetTickCount64() < m_giveUpAt;
            if (!again) {
                SetRefusal(nullptr);  // the next batch finds out whether the database takes records
                m_lost += batch.size();
                Tell(m_options.alarm, batch.size(), L"are lost", Utf8ToWide(error.what()));
                return;
            }
            if (!std::exchange(noted, true)) {
                Tell(m_options.note, batch.size(), L"have to wait", Utf8ToWide(error.what()));
            }
            if (IsFull(error)) {
                SetRefusal(&error);
            }
        }
        std::this_thread::sleep_for(kRest);
    }
}

void RecordWriter::StoreOnce(SqlDb& db, const Batch& batch) const {
    SqlTransaction transaction(db);
    std::set<const RecordTable*> touched;
    for (const Record& record : batch) {
        Insert(db, record);
        touched.insert(record.table);
    }
    for (const RecordTable* table : touched) {
        if (m_options.keep != 0) {
            KeepLatest(db, table->name, m_options.keep);
        }
    }
    transaction.Commit();
}

}  // namespace wrb
