#include "LogServer.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <utility>

#include "Bytes.h"
#include "LogFilter.h"
#include "LogLevel.h"
#include "ReceivedLine.h"
#include "ReceivedMessage.h"
#include "ServicePipes.h"
#include "SystemText.h"
#include "Text.h"
#include "VisibleText.h"
#include "logcl_command.h"

namespace wrb {
namespace {

constexpr std::size_t kMaxMessageBytes = 64 * 1024;  // a line is at most 4095 characters and its source's name
constexpr std::size_t kShownCharacters = 32;
constexpr unsigned kFileWorkers = 1;
constexpr unsigned kMostFiles = 8;

PipeListenerOptions ListenerOptions(const std::vector<std::wstring>& allowed,
                                    std::function<void(PipeDrop, std::size_t, uint32_t)> onDrop) {
    PipeListenerOptions options;
    options.name = kLogServicePipe;
    options.allowed = allowed;
    options.instances = 64;
    options.maxMessageBytes = kMaxMessageBytes;
    options.readTimeoutMilliseconds = 5'000;
    options.onDrop = std::move(onDrop);
    return options;
}

}  // namespace

LogServer::LogServer(const LogSettings& settings, Note note)
    : m_settings(settings),
      m_note(std::move(note)),
      m_files(settings.files),
      m_fileLimit(kMostFiles),
      m_listener(
          ListenerOptions(settings.allowed,
                          [this](PipeDrop reason, std::size_t bytes, uint32_t pid) {
                              m_note(FormatWide(L"log service: a message of process %u is dropped after %u bytes: %s",
                                                pid, static_cast<unsigned>(bytes), PipeDropText(reason)));
                          }),
          PipeListener::InOrder{kFileWorkers, [this](std::string message, const PipePeer& peer) {
                                    return Accept(std::move(message), peer);
                                }}) {}

bool LogServer::Start() {
    m_feed.Create(kLogFeedSection);
    if (!m_listener.Start()) {
        return false;
    }
    if (!LogFilter::Shared().Set(FilterWordOf(m_settings))) {
        m_note(L"log service: the filter word cannot be shared; every line will be sent");
    }
    return true;
}

void LogServer::Stop() {
    m_listener.Stop();
    TellLost(m_untold.Rest());
}

LogServerCounters LogServer::Counters() const {
    return {m_lines, m_badMessages + m_listener.Counters().dropped, m_lost};
}

// A message that is no text is refused in any case; a file that it names is deleted on a worker.
Job LogServer::Accept(std::string message, const PipePeer& peer) {
    Take(message, peer);
    return MayNameFile(BytesOf(message))
               ? m_fileLimit.Admit([message = std::move(message)] { DiscardSerialized(BytesOf(message)); })
               : Job();
}

void LogServer::Take(const std::string& message, const PipePeer& peer) {
    const std::wstring text = ReceivedText(BytesOf(message));
    const std::size_t end = std::min(text.size(), text.find(L'\t'));
    const std::wstring_view command = std::wstring_view(text).substr(0, end);
    const std::wstring_view fields = std::wstring_view(text).substr(std::min(text.size(), end + 1));
    if (command == kLogWriteCommand) {
        if (const std::optional<ReceivedLine> line = ParseLogLine(fields)) {
            WriteLine(*line);
            return;
        }
    } else if (command == kLogSetLevelCommand) {
        if (const LogLevelRow* const row = FindLogLevel(WideToUtf8(fields)); row != nullptr) {
            SetLevel(*row);
            return;
        }
    }
    ++m_badMessages;
    m_note(FormatWide(L"log service: refused a message of process %u: ", peer.Pid()) +
           VisibleText(std::wstring_view(text).substr(0, kShownCharacters)));
}

void LogServer::SetLevel(const LogLevelRow& row) {
    const bool shared = LogFilter::Shared().Set(row.word);
    WriteOwn(L'N', (shared ? L"the log level is now " : L"the log level cannot be set to ") + Utf8ToWide(row.level));
}

void LogServer::WriteOwn(wchar_t level, std::wstring_view text) {
    WriteLine({.seconds = std::time(nullptr),
               .process = GetCurrentProcessId(),
               .thread = GetCurrentThreadId(),
               .level = level,
               .sourceFile = L"wrbback",
               .line = 0,
               .text = L"[WRBBACK][wrbback.exe]" + std::wstring(text)});
}

void LogServer::WriteLine(const ReceivedLine& line) {
    if (!m_settings.enabled) {
        return;
    }
    const std::string text = FormatLogLine(line);
    if (m_feed && m_feed->IsWatched()) {
        Show(line, text);
    }
    const LogWriteResult result = m_files.Write(text);
    const DWORD error = GetLastError();
    if (result == LogWriteResult::Written) {
        ++m_lines;
        return;
    }
    ++m_lost;
    m_lossReason = result == LogWriteResult::NoSpace ? 0 : error;
    TellLost(m_untold.Add());
}

void LogServer::Show(const ReceivedLine& line, std::string_view text) {
    FeedLine shown{.level = line.level, .process = line.process, .thread = line.thread, .bytes = 0, .text = {}};
    text.remove_suffix(std::min<std::size_t>(text.size(), 2));  // CR and LF
    shown.bytes = static_cast<uint32_t>(text.copy(shown.text, sizeof shown.text));
    m_feed->Write(shown);
}

void LogServer::TellLost(uint64_t lines) {
    if (lines != 0) {
        const DWORD error = m_lossReason;
        m_note(FormatWide(L"log service: %llu lines are lost, ", static_cast<unsigned long long>(lines)) +
               (error == 0 ? L"the disk is short of space" : L"the file cannot be written: " + WideSystemText(error)));
    }
}

}  // namespace wrb
