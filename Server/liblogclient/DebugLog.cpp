#include "DebugLog.h"

#include <cstdarg>

#include "LogLine.h"

void DebugLog(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format, ...) noexcept {
    if (wrb::LogFilter::Shared().Admits(level)) {
        va_list arguments;
        va_start(arguments, format);
        wrb::WriteLogLine(level, sourceFile, line, format, arguments);
        va_end(arguments);
    }
}

void DebugLogA(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format, ...) noexcept {
    if (wrb::LogFilter::Shared().Admits(level)) {
        va_list arguments;
        va_start(arguments, format);
        wrb::WriteLogLine(level, sourceFile, line, format, arguments);
        va_end(arguments);
    }
}
