#include "CommandHost.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "AnswerPipe.h"
#include "CommandHead.h"
#include "CrashDump.h"
#include "DebugLog.h"
#include "ServicePipes.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kShownCharacters = 64;
constexpr uint64_t kFullNoteMilliseconds = 60'000;
constexpr std::chrono::milliseconds kLongestDrain{2'000};

// A sender's pipe is there and empty, or the sender goes without an answer.
constexpr AnswerLimits kRefusal{.connectMilliseconds = 0, .pieceMilliseconds = 50, .totalMilliseconds = 50};
constexpr uint8_t kZero[] = {'0', 0};

// The message as characters. An odd last byte is kept, with a zero byte after it: the library drops it.
std::wstring AsText(const std::string& message) {
    std::wstring text((message.size() + 1) / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), message.data(), message.size());
    return text;
}

// The command's name for people: a peer chose these characters, so none of them may steer a terminal.
std::wstring ShownName(const std::wstring& message) {
    std::wstring name = message.substr(0, kShownCharacters);
    name.resize(std::min(name.size(), name.find(L'\t')));
    std::ranges::replace_if(
        name, [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }, L'?');
    return name;
}

}  // namespace

PipeListenerOptions CommandHost::ListenerOptions(const CommandHostOptions& options) {
    PipeListenerOptions listener;
    listener.name = kHostPipe;
    listener.instances = options.connections;
    listener.memoryBudget = options.memoryBudget;
    listener.allowed = options.allowed;
    listener.onDrop = [this](PipeDrop reason, std::size_t bytes, uint32_t pid) { OnDrop(reason, bytes, pid); };
    return listener;
}

CommandHost::CommandHost(cmdhl_ProcessFn process, const CommandHostOptions& options, HostBoard& board,
                         ConsoleQueue& console)
    : m_process(process),
      m_board(board),
      m_console(console),
      m_listener(ListenerOptions(options),
                 PipeListener::InOrder{0, [this](std::string message,
                                                 const PipePeer& peer) { return Accept(std::move(message), peer); }}),
      m_lanes(options.lanes, [this](QueuedCommand command) { Run(std::move(command)); }) {}

CommandHost::~CommandHost() {
    if (!m_stopped) {
        Stop(std::chrono::milliseconds(0));
    }
}

bool CommandHost::Start() {
    m_sideline.Start();
    m_lanes.Start();
    return m_listener.Start();
}

void CommandHost::Stop(std::chrono::milliseconds limit) {
    m_stopped = true;
    const auto half = std::chrono::steady_clock::now() + limit / 2;
    m_listener.Stop(static_cast<uint32_t>(std::min(limit / 4, kLongestDrain).count()));
    m_lanes.WaitUntilNoneWaits(half);
    while (const std::optional<QueuedCommand> command = m_lanes.TakeQueued()) {
        TurnAway(command->message);
    }
    m_lanes.Finish();
    m_sideline.Finish();
}

// On the reading thread.
Job CommandHost::Accept(std::string message, const PipePeer& peer) {
    const CommandLane lane = ReadCommandHead(message).lane;
    QueuedCommand command{std::move(message), peer.TakeMemory()};
    switch (m_lanes.Put(lane, command)) {
        case LanePut::Runs:
            break;
        case LanePut::Waits:
            m_board.Count(HostCount::Waited);
            break;
        case LanePut::Full:
            TurnAway(command.message);
            break;
    }
    return {};
}

void CommandHost::TurnAway(const std::string& message) noexcept {
    m_board.Count(HostCount::TurnedAway);
    bool told = false;
    try {
        CommandHead head = ReadCommandHead(message);
        told = head.failure == FailureAnswer::None || m_sideline.Put([this, head = std::move(head)] {
            const auto answer = head.failure == FailureAnswer::Zero ? std::span(kZero) : std::span<const uint8_t>();
            if (IsClosedToAnswers(head.replyPipe.c_str()) || WriteAnswer(head.replyPipe, answer, kRefusal) != 0) {
                m_board.Count(HostCount::Unanswered);
            }
        });
        const uint64_t now = GetTickCount64();
        const uint64_t last = m_lastFullNote;
        if (last == 0 || now - last >= kFullNoteMilliseconds) {
            m_lastFullNote = now;
            WarnAside(L"commands are turned away: too many wait for a worker, or the host stops");
        }
    } catch (...) {
        // No memory to tell anybody.
    }
    if (!told) {
        m_board.Count(HostCount::Unanswered);
    }
}

void CommandHost::Run(QueuedCommand command) noexcept {
    try {
        Call(std::move(command.message));
    } catch (...) {
        m_board.Count(HostCount::Dropped);
        m_board.Count(HostCount::NoMemory);
    }
}

// Throws when there is no memory for the message as text.
void CommandHost::Call(std::string message) {
    const std::wstring text = AsText(message);
    const CrashNote note(text.c_str());
    const std::size_t bytes = message.size();
    std::string().swap(message);
    try {
        m_board.Count(m_process(text.data(), bytes) == 1 ? HostCount::Handled : HostCount::Refused);
    } catch (const std::bad_alloc& error) {
        m_board.Count(HostCount::NoMemory);
        m_board.Count(HostCount::Threw);
        WarnOfThrow(text, error.what());
    } catch (const std::exception& error) {
        m_board.Count(HostCount::Threw);
        WarnOfThrow(text, error.what());
    } catch (...) {
        m_board.Count(HostCount::Threw);
        WarnOfThrow(text, "not a std::exception");
    }
}

void CommandHost::OnDrop(PipeDrop reason, std::size_t bytes, uint32_t clientPid) {
    m_board.Count(HostCount::Dropped);
    if (reason == PipeDrop::NoMemory) {
        m_board.Count(HostCount::NoMemory);
    }
    WarnAside(FormatWide(L"a message of process %u is dropped after %u bytes: %s", clientPid,
                         static_cast<unsigned>(bytes), PipeDropText(reason)));
}

void CommandHost::Warn(const std::wstring& text) {
    m_console.Err(WideToUtf8(text));
    WRB_LOG(kLogError, L"%s", text.c_str());
}

void CommandHost::WarnOfThrow(const std::wstring& message, const char* what) noexcept {
    try {
        Warn(FormatWide(L"[%s] threw: %S", ShownName(message).c_str(), what));
    } catch (...) {
        // No memory for the line. The counters tell.
    }
}

void CommandHost::WarnAside(std::wstring text) {
    m_sideline.Put([this, text = std::move(text)] { Warn(text); });
}

}  // namespace wrb
