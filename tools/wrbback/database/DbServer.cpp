#include "DbServer.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>

#include "AgentUid.h"
#include "CmdProtocol.h"
#include "DbApiHeader.h"
#include "DbTransport.h"
#include "MsgSerializer.h"
#include "ReceivedMessage.h"
#include "SerializedCommands.h"
#include "ServicePipes.h"
#include "Store.h"
#include "SystemText.h"
#include "Text.h"
#include "TextCommands.h"

namespace wrb {
namespace {

constexpr unsigned kInstances = 64;
constexpr std::size_t kMaxRequestBytes = 4u << 20;
constexpr std::size_t kShownCharacters = 64;
constexpr unsigned kMostLists = 16;
constexpr std::chrono::seconds kListLimit{30};

std::wstring Shown(std::wstring_view text) {
    return std::wstring(text.substr(0, kShownCharacters));
}

unsigned ConnectionsOf(const DbServerOptions& options) {
    return options.connections != 0 ? options.connections : 2 * std::max(1u, std::thread::hardware_concurrency());
}

PipeListenerOptions ListenerOptions(const DbServerOptions& server,
                                    std::function<void(PipeDrop, std::size_t, uint32_t)> onDrop) {
    PipeListenerOptions options;
    options.name = kDbServerPipe;
    options.instances = kInstances + ConnectionsOf(server);  // the engine may hold one for each connection
    options.allowed = server.allowed;
    options.maxMessageBytes = kMaxRequestBytes;
    options.onDrop = std::move(onDrop);
    return options;
}

}  // namespace

DbServer::DbServer(DbServerOptions options)
    : m_options(std::move(options)),
      m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_writer(m_options.database, 1),
      m_readers(m_options.database, ConnectionsOf(m_options)),
      m_lister(m_options.database, 1),
      m_fileLimit(std::max(1u, m_options.workers / 2)),
      m_listLimit(kMostLists),
      m_listener(ListenerOptions(m_options, [this](PipeDrop reason, std::size_t bytes,
                                                   uint32_t pid) { NoteDrop(reason, bytes, pid); }),
                 PipeListener::InOrder{
                     m_options.workers + ConnectionsOf(m_options),
                     [this](std::string message, const PipePeer& peer) { return Accept(std::move(message), peer); }}) {
    VerifyStore(m_writer.Lend().Db(), m_options.database);
}

bool DbServer::Start() {
    m_writes.Start();
    m_lists.Start(1);
    return m_listener.Start();
}

void DbServer::Stop() {
    SetEvent(m_stop.Get());
    m_listener.Stop();
    m_lists.Finish();
    if (const Tally dropped = m_writes.Finish(); !dropped.empty()) {
        m_failed += SumOf(dropped);
        m_options.note(L"database server: writes are dropped, the database holds one: " + TallyText(dropped));
    }
}

DbServerCounters DbServer::Counters() const {
    return {m_reads, m_written, m_badRequests + m_listener.Counters().dropped, m_failed};
}

void DbServer::NoteDrop(PipeDrop reason, std::size_t bytes, uint32_t pid) {
    m_options.note(FormatWide(L"database server: a request of process %u is dropped after %u bytes: %s", pid,
                              static_cast<unsigned>(bytes), PipeDropText(reason)));
}

// Throws nothing, so that the asker gets an answer without memory for a note.
void DbServer::NoteFailure(DbCommand command, const std::exception& error) noexcept {
    ++m_failed;
    try {
        m_options.note(FormatWide(L"database server: %s failed: %s", DescribeDbCommand(command).name,
                                  Utf8ToWide(error.what()).c_str()));
    } catch (const std::exception&) {
        // The counter tells.
    }
}

Job DbServer::Refuse(const std::string& from, const std::wstring& why) {
    ++m_badRequests;
    m_options.note(L"database server: refused a request of " + Utf8ToWide(from) + L": " + why);
    return {};
}

// With the empty answer, so that the asker does not wait for ten minutes.
Job DbServer::RefuseAsker(const std::string& from, const std::wstring& replyPipe, const std::wstring& why) {
    Refuse(from, why);
    return replyPipe.empty() ? Job() : [this, replyPipe] { Reply(replyPipe, {}); };
}

Job DbServer::Accept(std::string message, const PipePeer& peer) {
    std::span<const uint8_t> request = BytesOf(message);
    const std::string from = "process " + std::to_string(peer.Pid());
    CDbApiHeaderContent header;
    if (const auto status = ReadDbApiHeader(request, header); status != DbApiHeaderStatus::Ok) {
        return Refuse(from, std::wstring(L"header frame: ") + DescribeDbApiHeaderStatus(status));
    }
    const std::size_t begin = message.size() - request.size();
    return IsSerialized(request) ? AcceptSerialized(std::move(message), begin, from) : AcceptText(request, from, peer);
}

// The read sees what has been accepted before it.
Job DbServer::AfterWrites(Job read) {
    return [this, writes = m_writes.Number(), read = std::move(read)] {
        m_writes.WaitFor(writes);
        read();
    };
}

Job DbServer::AcceptText(std::span<const uint8_t> bytes, const std::string& from, const PipePeer& peer) {
    if (bytes.empty() || bytes.size() % sizeof(wchar_t) != 0) {
        return Refuse(from, L"not a text");
    }
    const std::wstring text = ReceivedText(bytes);
    CCmdProtocol request(text.c_str());
    std::wstring name;
    uint32_t id = 0;
    request >> name >> id;
    const auto replyId = static_cast<int32_t>(id);
    const std::optional<DbCommand> command = FindDbCommand(name);
    const DbAnswer shape = command ? DescribeDbCommand(*command).answer : DbAnswer::Message;
    if (command && shape == DbAnswer::None) {
        PutWrite(*command, request, from, peer);
        return {};
    }
    if (replyId == kDbNoReplyId) {
        return Refuse(from, L"no such write: " + Shown(name));
    }
    const std::wstring replyPipe = FormatWide(L"DbCln_%d", replyId);
    if (shape == DbAnswer::Message) {
        return RefuseAsker(from, replyPipe, L"no such command: " + Shown(name));
    }
    Job read = AfterWrites([this, command = *command, request, replyPipe] { AnswerText(command, request, replyPipe); });
    return *command == DbCommand::ListRows ? PutList(std::move(read), from, replyPipe) : read;
}

// Agents' questions do not wait for a list, which may read whole tables.
Job DbServer::PutList(Job list, const std::string& from, const std::wstring& replyPipe) {
    list = m_listLimit.Admit(std::move(list));
    if (!list) {
        return RefuseAsker(from, replyPipe, L"too many lists wait");
    }
    m_lists.Push(std::move(list));
    return {};
}

// The write keeps its share of the listener's memory until it is carried out.
void DbServer::PutWrite(DbCommand command, const CCmdProtocol& request, const std::string& from, const PipePeer& peer) {
    const auto memory = std::make_shared<MemoryShare>(peer.TakeMemory());
    const std::size_t bytes = request.Text().size() * sizeof(wchar_t);
    if (!m_writes.Put(DbName(command), bytes, [this, command, fields = request, from, memory]() mutable {
            return Write(command, fields, from);
        })) {
        ++m_failed;
        m_options.note(FormatWide(L"database server: %s of %S is refused: too many writes wait for the database",
                                  DbName(command), from.c_str()));
    }
}

bool DbServer::Write(DbCommand command, CCmdProtocol& request, const std::string& from) {
    const auto onHeld = [&](const SqlError& why) {
        m_options.note(FormatWide(L"database server: %s is held: %s", DbName(command), Utf8ToWide(why.what()).c_str()));
    };
    try {
        if (const auto fault = TakeFault(command); fault && fault->kind == FaultKind::Silence) {
            return true;
        }
        if (m_writer.Run([&](SqlDb& db) { return RunTextCommand(db, command, request); }, onHeld) == 0) {
            m_options.note(FormatWide(L"database server: %s of %S changed nothing", DbName(command), from.c_str()));
        }
        ++m_written;
        return true;
    } catch (const std::exception& error) {
        NoteFailure(command, error);
        return false;
    }
}

// Runs `work` with a connection. False: the engine has held it for too long. The asker has then got an empty answer,
// and must get no other.
template <typename Work>
bool DbServer::Ask(StorePool& pool, DbCommand command, const std::wstring& replyPipe, const Work& work) {
    std::atomic<bool> gaveUp{false};
    const auto onHeld = [&](const SqlError& why) {
        if (!gaveUp.exchange(true)) {
            NoteFailure(command, why);
            Reply(replyPipe, {});
        }
    };
    try {
        pool.Run(work, onHeld);
        m_reads += gaveUp ? 0 : 1;
    } catch (const std::exception& error) {
        if (!gaveUp) {
            NoteFailure(command, error);
        }
    }
    return !gaveUp;
}

void DbServer::AnswerText(DbCommand command, const CCmdProtocol& request, const std::wstring& replyPipe) {
    std::optional<std::wstring> answer;
    const bool isList = command == DbCommand::ListRows;
    const auto work = [&](SqlDb& db) {
        if (isList && WaitForSingleObject(m_stop.Get(), 0) == WAIT_OBJECT_0) {
            return;  // all that wait would take too long
        }
        if (isList) {
            db.EndStatementsAt(std::chrono::steady_clock::now() + kListLimit);
        }
        CCmdProtocol fields = request;
        answer = AnswerTextCommand(db, command, fields);
    };
    if (Ask(isList ? m_lister : m_readers, command, replyPipe, work)) {
        ReplyTo(command, replyPipe, BytesOf(answer.value_or(std::wstring())));
    }
}

// A worker takes the message apart: it may name a file, which another program may hold.
Job DbServer::AcceptSerialized(std::string message, std::size_t begin, const std::string& from) {
    const auto request = BytesOf(message).subspan(begin);
    const bool mayNameFile = MayNameFile(request);
    const std::wstring replyPipe = mayNameFile ? ReplyPipeOf(request) : std::wstring();
    Job read = AfterWrites(
        [this, message = std::move(message), begin, from] { ServeSerialized(BytesOf(message).subspan(begin), from); });
    if (!mayNameFile) {
        return read;
    }
    read = m_fileLimit.Admit(std::move(read));
    if (!read) {
        return RefuseAsker(from, replyPipe, kTooManyFiles);
    }
    return read;
}

void DbServer::ServeSerialized(std::span<const uint8_t> bytes, const std::string& from) {
    CMsgSerializer message;
    const std::wstring noReplyPipe = message.Id();  // until the message has named one
    const auto refuse = [&](const std::wstring& why) {
        Refuse(from, why);
        if (message.Id() != noReplyPipe) {
            Reply(message.Id(), {});
        }
    };
    std::wstring uid;
    try {
        LoadReceivedMessage(bytes, message);
        message >> uid;
    } catch (const std::exception& error) {
        return refuse(L"a malformed message: " + Utf8ToWide(error.what()));
    }
    const std::optional<DbCommand> command = FindDbCommand(message.Name());
    if (!command || DescribeDbCommand(*command).answer != DbAnswer::Message) {
        return refuse(L"no such command: " + Shown(message.Name()));
    }
    uid.resize(std::min(uid.size(), kUidCharacters));
    AnswerSerialized(*command, uid, message);
}

void DbServer::AnswerSerialized(DbCommand command, const std::wstring& uid, CMsgSerializer& message) {
    const std::wstring replyPipe = message.Id();
    message.Reset();  // the answer has the request's name and id
    bool known = false;
    const auto work = [&](SqlDb& db) {
        known = AnswerSerializedCommand(db, command, uid, message) && message.Finalize();
    };
    const bool waits = Ask(m_readers, command, replyPipe, work);
    const std::span<const uint8_t> none;
    const auto answer = known ? std::span<const uint8_t>(message.Data(), message.GetSize()) : none;
    if (!waits || !ReplyTo(command, replyPipe, answer)) {
        message.DiscardSentFile();  // no other program knows its path
    }
}

// With the fault that the command has, of which a delay is over when this returns.
std::optional<FaultRule> DbServer::TakeFault(DbCommand command) {
    const std::optional<FaultRule> fault =
        m_options.faults != nullptr ? m_options.faults->Take(command) : std::optional<FaultRule>();
    if (fault) {
        m_options.note(L"database server: FAULT " + Utf8ToWide(FaultText(*fault)) + L" of " + DbName(command));
        if (fault->kind == FaultKind::Delay) {
            WaitForSingleObject(m_stop.Get(), fault->milliseconds);
        }
    }
    return fault;
}

// False also when a fault spoils the answer.
bool DbServer::ReplyTo(DbCommand command, const std::wstring& replyPipe, std::span<const uint8_t> answer) {
    const std::optional<FaultRule> fault = TakeFault(command);
    if (!fault || fault->kind == FaultKind::Delay) {
        return Reply(replyPipe, answer);
    }
    if (const auto spoilt = SpoiltAnswer(fault->kind, answer)) {
        Reply(replyPipe, *spoilt);
    }
    return false;
}

bool DbServer::Reply(const std::wstring& replyPipe, std::span<const uint8_t> answer) {
    const DWORD error = WriteAnswer(replyPipe, answer, m_options.answer);
    if (error != 0) {
        ++m_failed;
        m_options.note(FormatWide(L"database server: the answer to %s could not be delivered: %s",
                                  Shown(replyPipe).c_str(), WideSystemText(error).c_str()));
    }
    return error == 0;
}

}  // namespace wrb
