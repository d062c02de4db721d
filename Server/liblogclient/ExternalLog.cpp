#include "ExternalLog.h"

namespace wrb {

ExternalLog::ExternalLog(const wchar_t* libraryPath) noexcept
    : m_library(*libraryPath == L'\0' ? nullptr : LoadLibraryW(libraryPath)) {
    if (!m_library) {
        return;
    }
    for (std::size_t i = 0; i < kEntryCount; ++i) {
        m_entries[i] = GetProcAddress(m_library.Get(), kEntryNames[i]);
    }
}

bool ExternalLog::Initialize(const char* iniPath) const {
    InitWithIni* const initialize = Bound<InitWithIni>(kInitWithIni);
    if (initialize == nullptr) {
        return false;
    }
    initialize(iniPath, "", "");
    return true;
}

void ExternalLog::Trace(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text) const {
    if (TraceWide* const trace = Bound<TraceWide>(kTraceWide2)) {
        trace(sourceFile, line, level, text);
    }
}

}  // namespace wrb
