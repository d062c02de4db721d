// The database server of the reference back end, on "DbServerNamePipe".
//
// Writes are carried out one after the other, in the order of their connections, on one thread; reads run on workers,
// each with a connection of its own to the database, and see every write that was there before them. A write that the
// engine holds for more than 2.5 seconds is an exception: reads pass it. Writes for which there is no room are refused.
// A request that cannot be read is noted, counted and dropped; a request whose answer cannot be delivered likewise.
//
// An engine that hangs keeps nobody waiting for longer than StorePool's limit: the asker then gets an empty answer. The
// worker that waits for the engine is lost until it answers. There is a further worker for each connection, so that
// `workers` are left.
//
// Lists for people have a thread and a connection of their own, and end after half a minute.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "AnswerPipe.h"
#include "DbCommands.h"
#include "FaultBoard.h"
#include "JobLimit.h"
#include "JobQueue.h"
#include "PipeListener.h"
#include "StorePool.h"
#include "WriteLane.h"

class CCmdProtocol;
class CMsgSerializer;

namespace wrb {

struct DbServerOptions {
    std::wstring database;     // its address, see SqlAddress.h
    unsigned workers = 8;      // beside those that the engine holds
    unsigned connections = 0;  // for reads; 0: two for each processor
    AnswerLimits answer;

    // What an operator should know of, one line each. Called from any thread.
    std::function<void(const std::wstring& note)> note = [](const std::wstring&) {};

    std::vector<std::wstring> allowed = {};  // SIDs; see PipeListener.h
    FaultBoard* faults = nullptr;            // null: nothing is made to fail. Must outlive the server
};

struct DbServerCounters {
    uint64_t reads = 0;        // answered, also with "no such agent"
    uint64_t writes = 0;       // carried out
    uint64_t badRequests = 0;  // frames, texts and messages that could not be read, and connections that were dropped
    uint64_t failed = 0;       // the database refused, or the answer could not be delivered
};

class DbServer {
  public:
    // Opens the database; throws SqlError, see Store.h.
    explicit DbServer(DbServerOptions options);
    ~DbServer() { Stop(); }
    DbServer(const DbServer&) = delete;
    DbServer& operator=(const DbServer&) = delete;

    // False: GetLastError tells; ERROR_ALREADY_EXISTS means that another database server runs.
    bool Start();

    // Answers and carries out what it has accepted, then returns; see WriteLane::Finish.
    void Stop();

    // See WriteLane.
    Tally Waiting() const { return m_writes.Waiting(); }

    DbServerCounters Counters() const;

  private:
    Job Accept(std::string message, const PipePeer& peer);
    Job AcceptText(std::span<const uint8_t> request, const std::string& from, const PipePeer& peer);
    Job AcceptSerialized(std::string message, std::size_t begin, const std::string& from);
    Job AfterWrites(Job read);
    void PutWrite(DbCommand command, const CCmdProtocol& request, const std::string& from, const PipePeer& peer);
    bool Write(DbCommand command, CCmdProtocol& request, const std::string& from);
    Job PutList(Job list, const std::string& from, const std::wstring& replyPipe);
    template <typename Work>
    bool Ask(StorePool& pool, DbCommand command, const std::wstring& replyPipe, const Work& work);
    void AnswerText(DbCommand command, const CCmdProtocol& request, const std::wstring& replyPipe);
    void ServeSerialized(std::span<const uint8_t> request, const std::string& from);
    void AnswerSerialized(DbCommand command, const std::wstring& uid, CMsgSerializer& message);
    std::optional<FaultRule> TakeFault(DbCommand command);
    bool ReplyTo(DbCommand command, const std::wstring& replyPipe, std::span<const uint8_t> answer);
    bool Reply(const std::wstring& replyPipe, std::span<const uint8_t> answer);
    Job Refuse(const std::string& from, const std::wstring& why);
    Job RefuseAsker(const std::string& from, const std::wstring& replyPipe, const std::wstring& why);
    void NoteFailure(DbCommand command, const std::exception& error) noexcept;
    void NoteDrop(PipeDrop reason, std::size_t bytes, uint32_t pid);

    const DbServerOptions m_options;
    const KernelHandle m_stop;  // an event: ends the delays
    StorePool m_writer;         // one connection, of the lane's thread
    StorePool m_readers;
    StorePool m_lister;  // one connection, of the thread of the lists
    std::atomic<uint64_t> m_reads{0};
    std::atomic<uint64_t> m_written{0};
    std::atomic<uint64_t> m_badRequests{0};
    std::atomic<uint64_t> m_failed{0};
    JobLimit m_fileLimit;
    JobLimit m_listLimit;  // of those that wait and the one that runs
    WriteLane m_writes;
    JobQueue m_lists;
    PipeListener m_listener;  // last: its threads use the members above
};

}  // namespace wrb
