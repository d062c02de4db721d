#include "LogLine.h"

#include <windows.h>

#include <cwchar>
#include <string>

#include "Clock.h"
#include "LastError.h"
#include "LoggerState.h"
#include "Text.h"
#include "logcl_command.h"

namespace wrb {
namespace {

constexpr std::size_t kTextCharacters = 4096;  // with the terminator

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

// A line while it is put together.
struct LineText {
    wchar_t characters[kTextCharacters];
    std::size_t length;

    explicit LineText(const LoggerSetup& setup)
        : length(FormatInto(characters, kTextCharacters, L"[%s][%s]", setup.moduleTag.c_str(), HostName())) {}

    wchar_t* Tail() noexcept { return characters + length; }
    std::size_t Room() const noexcept { return kTextCharacters - length; }  // with the terminator
};

void Write(const LoggerSetup& setup, uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* text) {
    const wchar_t* const source = sourceFile == nullptr ? L"" : sourceFile;
    if (setup.internalLogger) {
        const auto seconds = static_cast<int32_t>(SystemClock().CalendarSeconds());
        logcl_Write({seconds, GetCurrentProcessId(), GetCurrentThreadId(), level, source, line, text},
                    setup.external.get());
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
