// The log lines of scan settings that were read or updated, at level 8. docs/commands.md lists those of an update.
#pragma once

#include <string>

#include "DbScanUpdate.h"
#include "ScanGroup.h"

namespace wrb {

// An empty uid stands for the server-wide settings.
void LogScanValues(const ScanGroup& group, const std::wstring& uid, const ScanGroupValues& values);

enum class ScanUpdateLevel { Agent, All, Ini };

// `uid` is used at the agent's level only.
void LogScanUpdate(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanWrite& update,
                   const ScanGroupValues& values);

}  // namespace wrb
