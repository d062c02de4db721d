// Requests for single facts about an agent, and writes of them.
//
// The getters fill `output`. A uid is cut to 36 characters. False, with an empty output: the database does not know the
// agent, or is down. Any thread; each waits for the database.
#pragma once

#include <string>

#include "AgentUid.h"
#include "DbAgent.h"

class CCmdProtocol;

namespace wrb {

// A text as the database gives it.
template <DbCommand command>
bool GetAgentText(std::wstring& output, const wchar_t* uid) {
    return ReadTextOf<command>(CutUid(uid).c_str(), output, 0);
}

// From the second status word: "1" isolate the agent's network (bit 0), else "2" release it (bit 1), else "0".
bool GetQuarantineCommand(std::wstring& output, const wchar_t* uid);

// Outbreak prevention: status and end time, TAB between them, both 0 once the end time has passed.
bool GetOppStatus(std::wstring& output, const wchar_t* uid);

// The section "INI_OPP_SECTION" of the scan INI while outbreak prevention is in force, else its header line alone.
bool GetOppSetting(std::wstring& output, const wchar_t* uid);

// Fields: a mask. "1" when any configuration-changed bit of it is set, else "0".
bool IsConfigFlagSet(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields);

// Fields: a text, of which 4096 characters count. "1" when it was sent to the database, else "0" and false.
bool StoreServerAuthLog(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields);

}  // namespace wrb
