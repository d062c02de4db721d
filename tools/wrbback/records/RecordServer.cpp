#include "RecordServer.h"

#include <exception>
#include <utility>

#include "QmAgentClient.h"
#include "ReceivedMessage.h"
#include "RecordParser.h"
#include "ServicePipes.h"
#include "Text.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"

namespace wrb {
namespace {

constexpr unsigned kInstances = 64;
constexpr std::size_t kMaxMessageBytes = 64 * 1024;  // the two long texts of a row are 16 KiB, escapes make them more
constexpr unsigned kFileWorkers = 1;                 // of each service
constexpr unsigned kMostFiles = 8;                   // messages with files under way, of all

}  // namespace

struct RecordServer::Service {
    const wchar_t* pipe;
    const wchar_t* name;  // for people
    Record (*parse)(std::span<const uint8_t> bytes);
};

const RecordServer::Service RecordServer::kServices[] = {
    {kLogPoolPipe, L"log pool", ParseLogPoolMessage},
    {kQmAgentPipe, L"central-management agent", ParseAgentEvent},
    {kWrbServerPipe, L"agent-command service", ParseSpywareEvent},
};

RecordServer::RecordServer(RecordServerOptions options)
    : m_options(std::move(options)),
      m_writer({m_options.database, m_options.keep, m_options.note, m_options.alarm}),
      m_fileLimit(kMostFiles) {
    for (const Service& service : kServices) {
        PipeListenerOptions listener;
        listener.name = service.pipe;
        listener.allowed = m_options.allowed;
        listener.instances = kInstances;
        listener.maxMessageBytes = kMaxMessageBytes;
        listener.onDrop = [this, &service](PipeDrop reason, std::size_t bytes, uint32_t pid) {
            NoteDrop(service, reason, bytes, pid);
        };
        const auto accept = [this, &service](std::string message, const PipePeer& peer) {
            return Accept(service, std::move(message), peer);
        };
        m_listeners.push_back(std::make_unique<PipeListener>(listener, PipeListener::InOrder{kFileWorkers, accept}));
    }
}

const wchar_t* RecordServer::Start() {
    for (std::size_t i = 0; i < m_listeners.size(); ++i) {
        if (!m_listeners[i]->Start()) {
            return kServices[i].pipe;
        }
    }
    return nullptr;
}

void RecordServer::Stop() {
    m_writer.Hurry();  // a reading thread may be waiting for it
    for (const auto& listener : m_listeners) {
        listener->Stop();
    }
    m_writer.Finish();
}

RecordServerCounters RecordServer::Counters() const {
    RecordServerCounters counters{m_writer.Stored(), m_badMessages, m_writer.Lost()};
    for (const auto& listener : m_listeners) {
        counters.badMessages += listener->Counters().dropped;
    }
    return counters;
}

Job RecordServer::Accept(const Service& service, std::string message, const PipePeer& peer) {
    if (!MayNameFile(BytesOf(message))) {
        Take(service, message, peer);
        return {};
    }
    Job job = m_fileLimit.Admit([this, &service, message = std::move(message), peer] { Take(service, message, peer); });
    if (!job) {
        Refuse(service, peer, kTooManyFiles);
    }
    return job;
}

void RecordServer::Take(const Service& service, const std::string& message, const PipePeer& peer) {
    try {
        m_writer.Put(service.parse(BytesOf(message)));
    } catch (const std::exception& error) {
        Refuse(service, peer, Utf8ToWide(error.what()));
    }
}

void RecordServer::Refuse(const Service& service, const PipePeer& peer, const std::wstring& why) {
    ++m_badMessages;
    m_options.note(FormatWide(L"%s: refused a message of process %u: ", service.name, peer.Pid()) + why);
}

void RecordServer::NoteDrop(const Service& service, PipeDrop reason, std::size_t bytes, uint32_t pid) const {
    m_options.note(FormatWide(L"%s: a message of process %u is dropped after %u bytes: %s", service.name, pid,
                              static_cast<unsigned>(bytes), PipeDropText(reason)));
}

}  // namespace wrb
