#include "LogLine.h"

#include <windows.h>

#include <chrono>
#include <cwchar>
#include <new>
#include <string>

#include "Clock.h"
#include "DebugLog.h"
#include "LastError.h"
#include "LogBreaker.h"
#include "LoggerState.h"
#include "Text.h"
#include "logcl_command.h"

namespace wrb {
namespace {

constexpr std::size_t kTextCharacters = 4096;  // with the terminator

constinit LogBreaker breaker;

uint32_t Now() {
    return SystemClock().TickMilliseconds();
}

// The file name of the program that this module was loaded into. An array, which has no destructor: lines are written
// until the very end of the process.
const wchar_t* HostName() {
    static wchar_t path[MAX_PATH + 1];
    static const wchar_t* const name = [] {
        GetModuleFileNameW(nullptr, path, MAX_PATH);  // the last element stays NUL
        const wchar_t* const slash = std::wcsrchr(path, L'\\');
        return slash == nullptr ? path : slash + 1;
    }();
    return name;
}

// A line under construction.
struct LineText {
    wchar_t characters[kTextCharacters];
    std::size_t length;

    explicit LineText(const LoggerSetup& setup)
        : length(FormatInto(characters, kTextCharacters, L"[%s][%s]", setup.moduleTag.c_str(), HostName())) {}

    wchar_t* Tail() noexcept { return characters + length; }
    std::size_t Room() const noexcept { return kTextCharacters - length; }  // with the terminator
};

// What a try waits, by a clock that is finer than ticks: a line of a sound service takes less than one.
class TimedTry {
  public:
    explicit TimedTry(uint32_t limit) : m_limit(limit) {}
    ~TimedTry() {
        const auto waited = std::chrono::steady_clock::now() - m_start;
        breaker.Waited(Now(), static_cast<uint32_t>(std::chrono::floor<std::chrono::milliseconds>(waited).count()),
                       m_limit);
    }
    TimedTry(const TimedTry&) = delete;
    TimedTry& operator=(const TimedTry&) = delete;

  private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    const uint32_t m_limit;
};

// Counts a line that fails, except where no service runs.
bool Send(const LoggerSetup& setup, uint32_t level, const wchar_t* source, uint32_t line, const wchar_t* text) {
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    try {
        const TimedTry timed(setup.waitMilliseconds);
        const auto seconds = static_cast<int32_t>(SystemClock().CalendarSeconds());
        const LogLine fields{seconds, GetCurrentProcessId(), GetCurrentThreadId(), level, source, line, text};
        if (logcl_Write(fields, setup.external.get(), setup.waitMilliseconds) == 1) {
            return true;
        }
        error = GetLastError();
    } catch (const std::bad_alloc&) {
    }
    if (error == ERROR_SEM_TIMEOUT) {
        breaker.Trip(Now());
    } else if (error != ERROR_FILE_NOT_FOUND) {
        breaker.AddLost(1);
    }
    return false;
}

// False when the note itself is lost. Then its own loss counts for the line after it, which is not sent.
bool ReportLost(const LoggerSetup& setup, uint32_t lost) {
    LineText note(setup);
    FormatInto(note.Tail(), note.Room(), L"%u log lines lost", lost);
    if (Send(setup, kLogWarning, WRB_SOURCE_FILE, __LINE__, note.characters)) {
        return true;
    }
    breaker.AddLost(lost);
    return false;
}

void WriteToService(const LoggerSetup& setup, uint32_t level, const wchar_t* source, uint32_t line,
                    const wchar_t* text) {
    if (breaker.Skips(Now())) {
        return;
    }
    const uint32_t lost = breaker.TakeLost();
    if (lost == 0 || ReportLost(setup, lost)) {
        Send(setup, level, source, line, text);
    }
}

void Write(const LoggerSetup& setup, uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* text) {
    const wchar_t* const source = sourceFile == nullptr ? L"" : sourceFile;
    if (setup.internalLogger) {
        WriteToService(setup, level, source, line, text);
    } else if (setup.external != nullptr) {
        setup.external->Trace(source, line, level, text);
    }
    if (setup.mirror != nullptr) {
        setup.mirror->Append(source, line, text);
    }
}

// The frame of both forms; `append` adds the caller's message to the line's prefix.
template <typename Append>
void WriteWith(uint32_t level, const wchar_t* sourceFile, uint32_t line, Append append) noexcept {
    const KeepLastError keep;
    try {
        if (const auto setup = LoggerState::Shared().Get()) {
            LineText text(*setup);
            append(text);
            Write(*setup, level, sourceFile, line, text.characters);
        }
    } catch (...) {  // out of memory: the line is lost, the caller goes on
    }
}

}  // namespace

void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format,
                  va_list arguments) noexcept {
    WriteWith(level, sourceFile, line,
              [&](LineText& text) { FormatIntoV(text.Tail(), text.Room(), format, arguments); });
}

void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format,
                  va_list arguments) noexcept {
    WriteWith(level, sourceFile, line, [&](LineText& text) {
        char message[kTextCharacters];
        FormatIntoV(message, kTextCharacters, format, arguments);
        FormatInto(text.Tail(), text.Room(), L"%s", AnsiToWide(message).c_str());
    });
}

}  // namespace wrb
