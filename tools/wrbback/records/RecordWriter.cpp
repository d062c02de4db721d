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

constexpr std::size_t kMostQueued = 1000;
constexpr ULONGLONG kLastMilliseconds = 60'000;
constexpr std::chrono::milliseconds kRest{500};

// Errors that end by themselves, or once there is room on the disk.
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
            return true;
        default:
            return false;
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

// Rows go in the order of their coming, so the ids are without gaps and the newest tells which are too old.
void Trim(SqlDb& db, const RecordTable& table, int64_t keep) {
    const std::string name = table.name;
    SqlStatement trim = db.Use("DELETE FROM " + name + " WHERE id <= (SELECT max(id) FROM " + name + ") - :keep");
    trim.Bind(":keep", keep).Run();
}

}  // namespace

RecordWriter::RecordWriter(const std::wstring& database, int64_t keep, Note note)
    : m_keep(keep), m_note(std::move(note)), m_db(OpenStore(database)), m_thread([this] { Work(); }) {}

void RecordWriter::Put(Record record) {
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [this] { return m_queue.size() < kMostQueued; });
        m_queue.push_back(std::move(record));
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
            StoreOnce(batch);
            m_stored += batch.size();
            return;
        } catch (const std::exception& error) {
            const bool again = MayPass(error) && GetTickCount64() < m_giveUpAt;
            if (!again || !std::exchange(noted, true)) {
                NoteFailure(batch.size(), again ? L"have to wait" : L"are lost", error.what());
            }
            if (!again) {
                m_lost += batch.size();
                return;
            }
        }
        std::this_thread::sleep_for(kRest);
    }
}

void RecordWriter::NoteFailure(std::size_t rows, const wchar_t* what, const char* why) const noexcept {
    try {
        m_note(FormatWide(L"records: %u rows %s: %s", static_cast<unsigned>(rows), what, Utf8ToWide(why).c_str()));
    } catch (const std::exception&) {
        // No memory for a note either. Rows that are lost are counted all the same.
    }
}

void RecordWriter::StoreOnce(const Batch& batch) {
    SqlTransaction transaction(*m_db);
    std::set<const RecordTable*> touched;
    for (const Record& record : batch) {
        Insert(*m_db, record);
        touched.insert(record.table);
    }
    for (const RecordTable* table : touched) {
        if (m_keep != 0) {
            Trim(*m_db, *table, m_keep);
        }
    }
    transaction.Commit();
}

}  // namespace wrb
