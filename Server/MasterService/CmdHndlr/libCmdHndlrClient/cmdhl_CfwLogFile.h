// One firewall log file of an agent (PfwLogRecord.h), forwarded record by record to the two services that take it.
#pragma once

#include <cstdint>
#include <string>

#include "CfwUpload.h"

// Forwards every record of the file to the central-management agent and to the log pool. Returns -2 when a record had
// wrong markers or did not reach the log pool, otherwise 1: also without a file, with an unreadable one and with one of
// an unknown version. Throws for lack of memory only.
//
// Adds to the `lost` of `upload` what the services have not taken, also when it throws; records with wrong markers do
// not count. Of a file that cannot be opened all records count, by its size. Memory does not grow with the file. Any
// thread, each with a file and an upload of its own.
int32_t processCFWLogFile(const std::wstring& uid, const wchar_t* fileName, wrb::CfwUpload& upload);
