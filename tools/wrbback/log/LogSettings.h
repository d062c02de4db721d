// The log service's settings: defaults, the section "Debug" of an INI file, and what the command line says on top.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LogFiles.h"

namespace wrb {

struct LogSettings {
    bool enabled = true;          // DebugFlags: without it no line is wanted, and none is written
    std::wstring level = L"all";  // DebugLevel: one of LogLevel.h
    LogFileOptions files;
    std::vector<std::wstring> allowed;  // SIDs of the accounts that may send lines; see PipeListener.h
};

// Reads the keys that are there and not empty over what `settings` holds. An empty path reads nothing. Returns what is
// wrong, a value that makes no sense or the file itself, or nothing.
std::wstring ReadLogSettings(const std::wstring& iniPath, LogSettings& settings);

// The filter word that these settings ask for.
uint32_t FilterWordOf(const LogSettings& settings);

}  // namespace wrb
