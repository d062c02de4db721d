// All scan settings of an agent in one question, or two when it has lists.
//
// `uid` is cut to 36 characters; `caller` is the asking function's name, for the server's log. True when the answer
// could be read; false, with a log line, when the request failed, the agent is not known or the answer is malformed:
// the record is then not to be used. None throws. Waits at most 600 seconds.
#pragma once

#include "DbAllScanRecord.h"

bool dbGetClnAllScanCfgW(const wchar_t* uid, wrb::AllScanConfig& cfg, const wchar_t* caller) noexcept;

// Worth asking when the first answer has hasExtra.
bool dbGetClnAllScanExW(const wchar_t* uid, wrb::AllScanLists& lists, const wchar_t* caller) noexcept;
