// The three services that take and never answer: the log pool, the central-management agent and the agent-command
// service. What they are sent becomes rows of the database, in the order of the connections of each service; a message
// whose body is in a file may be overtaken.
//
// A message is taken when its sender has closed the pipe: from then on it is stored, also when the service is being
// stopped. Messages that cannot be read are noted, counted and dropped.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "JobLimit.h"
#include "PipeListener.h"
#include "RecordWriter.h"

namespace wrb {

struct RecordServerOptions {
    std::wstring database;
    int64_t keep = 0;  // rows of each table; 0: all

    // What an operator should know of, one line each. Called from any thread.
    std::function<void(const std::wstring& note)> note = [](const std::wstring&) {};

    std::vector<std::wstring> allowed = {};  // SIDs; see PipeListener.h

    // The same for rows that are refused or lost.
    std::function<void(const std::wstring& note)> alarm = [](const std::wstring&) {};
};

struct RecordServerCounters {
    uint64_t stored = 0;
    uint64_t badMessages = 0;  // those that could not be read, and connections that were dropped
    uint64_t lost = 0;         // rows that the database did not take: refused ones, and those of a stop without it
};

class RecordServer {
  public:
    explicit RecordServer(RecordServerOptions options);  // throws SqlError, see Store.h
    ~RecordServer() { Stop(); }
    RecordServer(const RecordServer&) = delete;
    RecordServer& operator=(const RecordServer&) = delete;

    // Null, or the pipe that could not be made. GetLastError then tells; ERROR_ALREADY_EXISTS means that another
    // program serves it.
    const wchar_t* Start();

    void Stop();

    RecordServerCounters Counters() const;

    // See RecordWriter.
    Tally Waiting() { return m_writer.Waiting(); }

  private:
    struct Service;
    static const Service kServices[];

    Job Accept(const Service& service, std::string message, const PipePeer& peer);
    void Take(const Service& service, const std::string& message, const PipePeer& peer);
    void Refuse(const Service& service, const PipePeer& peer, const std::wstring& why);
    void NoteDrop(const Service& service, PipeDrop reason, std::size_t bytes, uint32_t pid) const;

    const RecordServerOptions m_options;
    RecordWriter m_writer;
    std::atomic<uint64_t> m_badMessages{0};
    JobLimit m_fileLimit;
    std::vector<std::unique_ptr<PipeListener>> m_listeners;  // last: their threads use the members above
};

}  // namespace wrb
