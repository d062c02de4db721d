// DebugLog: the one levelled, printf-style trace of every module.
//
// A line that the shared filter word admits (LogFilter.h) is sent as a "LOG_WRITE" message to the log service, which
// writes, splits and prunes the files; this side keeps none. When the service is not running the line is lost.
//
// A line that the service does not take within 20 ms is lost, and no line is sent for one second (LogBreaker.h). The
// next line follows a line "N log lines lost" at level 'W'. N includes the lines that were lost for other reasons,
// except those that found no service.
//
// Every function here may be called from any thread, at any time, also before the set-up and while the process ends.
// None throws, none reports a failure to its caller, and all keep the thread's last error, so that a caller may log
// first and read the cause of its own failure afterwards.
//
// A log service must not log through this: it would feed itself.
#pragma once

#include <cstdint>

#include "LogFilter.h"
#include "SourceFile.h"

// The levels in use. A letter and a number of the same class are filtered alike but arrive as they were given.
inline constexpr uint32_t kLogError = 'E';
inline constexpr uint32_t kLogWarning = 'W';
inline constexpr uint32_t kLogInfo = 'I';
inline constexpr uint32_t kLogDebug = 'D';
inline constexpr uint32_t kLogFatal2 = 2;   // class F
inline constexpr uint32_t kLogNotice5 = 5;  // class W
inline constexpr uint32_t kLogDebug8 = 8;   // class D

// Writes "[module tag][program]" and the formatted message, cut together at 4095 characters. In a format %s is wide
// text and %S narrow. The narrow twin takes a narrow format (%s narrow, %S wide) in the system's code page. Call them
// through WRB_LOG.
void DebugLog(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format, ...) noexcept;
void DebugLogA(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format, ...) noexcept;

// Names the module and chooses the route. May run any number of times, also while other threads log; each run replaces
// the settings of the one before. `debugIni` and `debugLibrary` are cut at 260 characters, null texts count as empty.
//
// With `internalLogger` set, as every caller in this system does, lines go to the log service and the result is 0.
// With it clear, `debugLibrary` is loaded and lines go to its entry points (ExternalLog.h); the result is 1 when the
// library and its initialisation entry were found and the entry was called, else 0. Before the first run lines go
// nowhere.
int DebugLogSetup(const wchar_t* debugIni, const wchar_t* debugLibrary, const char* moduleTag,
                  bool internalLogger) noexcept;

// Attaches a mirror file, to which every admitted line is also appended (LogMirror.h); null detaches it. False when
// the file cannot be opened: then there is no mirror. Nothing in this library calls it; a host may.
bool DebugLogAttachMirror(const wchar_t* path) noexcept;

// The filter is asked before the arguments are evaluated: a line that is filtered out costs a look at the shared word.
// The second form names another source file and line.
#define WRB_LOG(level, format, ...) WRB_LOG_FROM(level, WRB_SOURCE_FILE, __LINE__, format __VA_OPT__(, ) __VA_ARGS__)
#define WRB_LOG_FROM(level, sourceFile, line, format, ...)                        \
    do {                                                                          \
        if (wrb::LogFilter::Shared().Admits(level)) {                             \
            DebugLog(level, sourceFile, line, format __VA_OPT__(, ) __VA_ARGS__); \
        }                                                                         \
    } while (false)
