// The other route of the debug log: a debug library of the host's choice, bound at run time by the names of its entry
// points. Used only when the set-up was told not to log internally.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "Handle.h"

namespace wrb {

// Receives the lines that do not go to the log service. Called from many threads at once.
class IExternalLog {
  public:
    virtual ~IExternalLog() = default;
    virtual void Trace(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text) const = 0;
};

class ExternalLog final : public IExternalLog {
  public:
    // Loads the library and looks up its entry points. Does not report what is missing.
    explicit ExternalLog(const wchar_t* libraryPath) noexcept;

    // Calls the library's initialisation with the ini path (system code page) and two empty texts. False: it has none.
    bool Initialize(const char* iniPath) const;

    // Does nothing when the library has no wide trace entry.
    void Trace(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text) const override;

  private:
    // The library offers eight entries; the two that are called are declared so:
    using InitWithIni = int(const char* iniPath, const char*, const char*);
    using TraceWide = void(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text);

    enum Entry : std::size_t {
        kInitWithIni,
        kAddChannel,
        kTraceWide2,
        kTraceNarrow2,
        kTraceWide,
        kSetMessage,
        kTrace,
        kTraceToChannel,
        kEntryCount,
    };
    static constexpr std::array<const char*, kEntryCount> kEntryNames = {
        "SD_InitDebug_with_Ini_0200",
        "SD_DbLogAddChannel",
        "SD_TraceW_0200",
        "SD_TraceA_0200",
        "SD_TraceW",
        "SD_SetDebugMsg",
        "SD_DbLogTrace",
        "SD_DbLogTraceToChannel",
    };

    template <typename Function>
    Function* Bound(Entry entry) const noexcept {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(m_entries[entry]));
    }

    ModuleHandle m_library;
    std::array<FARPROC, kEntryCount> m_entries{};
};

}  // namespace wrb
