// Update of an agent's privileges: what its user may do and is shown.
#pragma once

#include <span>

#include "DbPrivilege.h"

class CCmdProtocol;

// Takes one switch a bit, in the order of `bits`, from where `message` stands, and stores them; the agent's other
// privileges stay as they are. A missing switch is off. False, after a log line, for an empty uid (null counts as
// empty; a longer one is cut to 36 characters) and when the request could not be sent. Throws only for lack of memory.
bool cmdhm_SetPrivileges(CCmdProtocol& message, const wchar_t* uid, std::span<const wrb::DbPrivilegeBit> bits);
