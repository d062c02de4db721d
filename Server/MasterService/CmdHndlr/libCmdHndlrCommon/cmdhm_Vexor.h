// Behaviour monitoring, application control and device control of one agent.
#pragma once

#include <string>
#include <vector>

#include "VexorRecords.h"

// Appends the sections of the three containers. The behaviour policies are `serverPolicies`, replaced by those of the
// agent with the same id; the agent's others follow. A policy whose action is 0 gets the document's default action. A
// uid is cut to 36 characters.
//
// False, with a log line, and `out` as it was: a request failed, or the agent's policy document cannot be read. An
// agent that is unknown or has no document is a success that appends nothing. Throws only for lack of memory. Any
// thread; waits for the database, two requests.
bool cmdhm_GetVexorSetting(std::wstring& out, const wchar_t* uid,
                           const std::vector<tagVEXORPolicyItem>& serverPolicies);
