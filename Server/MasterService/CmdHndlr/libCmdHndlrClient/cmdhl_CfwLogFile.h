// One firewall log file of an agent (PfwLogRecord.h), forwarded record by record to the two services that take it.
#pragma once

#include <cstdint>
#include <string>

#include "CfwUpload.h"

namespace wrb {

// processCFWLogFile for one file of `upload`. Adds to its `lost` what the services have not taken, also when it throws,
// which it does for lack of memory only; records with wrong markers do not count. Of a file that cannot be opened all
// records count, by its size. Memory does not grow with the file. Any thread, each with a file of its own.
int32_t ForwardCfwLogFile(CfwUpload& upload, const wchar_t* fileName);

}  // namespace wrb

// Forwards every record of the file to the central-management agent and to the log pool. Returns -2 when a record had
// wrong markers or did not reach the log pool, otherwise 1: also without a file, with an unreadable one and with one of
// an unknown version. Throws for lack of memory only.
int32_t processCFWLogFile(const std::wstring& uid, const wchar_t* fileName);
