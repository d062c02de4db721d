#include "DebugLog.h"

#include <windows.h>

#include <cstdarg>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "Clock.h"
#include "ExternalLog.h"
#include "LastError.h"
#include "LogMirror.h"
#include "SRWLock.h"
#include "Text.h"
#include "logcl_command.h"

namespace {

constexpr std::size_t kTextCharacters = 4096;  // with the terminator
constexpr std::size_t kTagBytes = 1024;
constexpr std::size_t kTagCharacters = 1023;
constexpr std::size_t kPathCharacters = 260;

// What one set-up said. Never changed once it is visible: a thread that logs holds on to the one it began with, and
// the debug library is unloaded with the last holder.
struct tagLoggerSetup {
    std::wstring moduleTag;
    bool internalLogger = false;
    std::shared_ptr<const wrb::CExternalLog> external;
    std::shared_ptr<const wrb::CLogMirror> mirror;
};
using SetupPtr = std::shared_ptr<const tagLoggerSetup>;

class CLoggerState {
  public:
    // Never destroyed, like the filter: objects that outlive this module's statics may still log.
    static CLoggerState& Shared() noexcept {
        alignas(CLoggerState) static unsigned char storage[sizeof(CLoggerState)];
        static CLoggerState* const state = new (storage) CLoggerState;
        return *state;
    }

    // Null before the first set-up.
    SetupPtr Get() noexcept {
        const CSharedGuard guard(m_lock);
        return m_setup;
    }

    // Lets `change` alter a copy of the present set-up and makes that the present one.
    template <typename Change>
    void Replace(Change change) {
        auto next = std::make_shared<tagLoggerSetup>();
        SetupPtr last;  // let go outside the lock: unloading a library runs its code
        const CExclusiveGuard guard(m_lock);
        if (m_setup != nullptr) {
            *next = *m_setup;
        }
        change(*next);
        last = std::exchange(m_setup, std::move(next));
    }

  private:
    CWrbSRWLock m_lock;
    SetupPtr m_setup WRB_GUARDED_BY(m_lock);
};

std::wstring_view CutText(const wchar_t* text, std::size_t limit) {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text).substr(0, limit);
}

// The file name of the program that this module was loaded into.
const std::wstring& HostName() {
    static const std::wstring name = [] {
        wchar_t path[MAX_PATH];
        const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
        const std::wstring_view whole(path, length);
        return std::wstring(whole.substr(whole.find_last_of(L'\\') + 1));
    }();
    return name;
}

// A line while it is put together. Cleared at the start because a printf that meets a text it cannot convert gives up
// without writing a terminator.
struct tagLineText {
    wchar_t characters[kTextCharacters] = {};
    std::size_t length = 0;

    explicit tagLineText(const tagLoggerSetup& setup)
        : length(
              wrb::FormatInto(characters, kTextCharacters, L"[%s][%s]", setup.moduleTag.c_str(), HostName().c_str())) {}

    wchar_t* Tail() noexcept { return characters + length; }
    std::size_t Room() const noexcept { return kTextCharacters - length; }  // with the terminator
};

void Write(const tagLoggerSetup& setup, uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* text) {
    const wchar_t* const source = sourceFile == nullptr ? L"" : sourceFile;
    if (setup.internalLogger) {
        const auto seconds = static_cast<int32_t>(wrb::SystemClock().CalendarSeconds());
        logcl_Write({seconds, GetCurrentProcessId(), GetCurrentThreadId(), level, source, line, text},
                    setup.external.get());
    } else if (setup.external != nullptr) {
        setup.external->Trace(source, line, level, text);
    }
    if (setup.mirror != nullptr) {
        setup.mirror->Append(source, line, text);
    }
}

// The frame of both twins; `append` puts the caller's message behind the line's prefix.
template <typename Append>
void WriteAdmitted(uint32_t level, const wchar_t* sourceFile, uint32_t line, Append append) noexcept {
    const wrb::CKeepLastError keep;
    try {
        if (const SetupPtr setup = CLoggerState::Shared().Get()) {
            tagLineText text(*setup);
            append(text);
            Write(*setup, level, sourceFile, line, text.characters);
        }
    } catch (...) {  // out of memory: the line is lost, the caller goes on
    }
}

}  // namespace

void DebugLog(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format, ...) noexcept {
    if (!wrb::CLogFilter::Shared().Admits(level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    WriteAdmitted(level, sourceFile, line,
                  [&](tagLineText& text) { wrb::FormatIntoV(text.Tail(), text.Room(), format, arguments); });
    va_end(arguments);
}

void DebugLogA(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format, ...) noexcept {
    if (!wrb::CLogFilter::Shared().Admits(level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    WriteAdmitted(level, sourceFile, line, [&](tagLineText& text) {
        char message[kTextCharacters] = {};
        wrb::FormatIntoV(message, kTextCharacters, format, arguments);
        wrb::FormatInto(text.Tail(), text.Room(), L"%s", wrb::AnsiToWide(message).c_str());
    });
    va_end(arguments);
}

int DebugLogSetup(const wchar_t* debugIni, const wchar_t* debugLibrary, const char* moduleTag,
                  bool internalLogger) noexcept {
    const wrb::CKeepLastError keep;
    try {
        const std::string tag(moduleTag == nullptr ? "" : std::string_view(moduleTag).substr(0, kTagBytes));
        std::shared_ptr<wrb::CExternalLog> external;
        bool initialized = false;
        if (!internalLogger) {
            external =
                std::make_shared<wrb::CExternalLog>(std::wstring(CutText(debugLibrary, kPathCharacters)).c_str());
            const std::string ini = wrb::WideToAnsi(CutText(debugIni, kPathCharacters)).substr(0, kPathCharacters);
            initialized = external->Initialize(ini.c_str());
        }
        CLoggerState::Shared().Replace([&](tagLoggerSetup& setup) {
            setup.moduleTag = wrb::AnsiToWide(tag).substr(0, kTagCharacters);
            setup.internalLogger = internalLogger;
            setup.external = std::move(external);
        });
        return initialized ? 1 : 0;
    } catch (...) {  // out of memory: what the last set-up said stays
        return 0;
    }
}

bool DebugLogAttachMirror(const wchar_t* path) noexcept {
    const wrb::CKeepLastError keep;
    try {
        auto mirror = path == nullptr ? nullptr : std::make_shared<const wrb::CLogMirror>(path);
        if (mirror != nullptr && !mirror->IsOpen()) {
            mirror = nullptr;
        }
        const bool opened = mirror != nullptr;
        CLoggerState::Shared().Replace([&](tagLoggerSetup& setup) { setup.mirror = std::move(mirror); });
        return opened || path == nullptr;
    } catch (...) {
        return false;
    }
}
