// The log line of an update, one a level, at level 8.
#pragma once

#include "DbScanUpdate.h"
#include "ScanGroup.h"

namespace wrb {

enum class ScanUpdateLevel { Agent, All, Ini };

// `uid` is used at the agent's level only. A spyware group with a list gets a second line.
void LogScanUpdate(const ScanGroup& group, ScanUpdateLevel level, const wchar_t* uid, const ScanUpdate& update,
                   const ScanGroupValues& values);

}  // namespace wrb
