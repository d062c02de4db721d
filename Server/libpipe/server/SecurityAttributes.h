// The security of the reply pipes.
#pragma once

#include "OpenSecurity.h"

// Fills `security` with a present but null access-control list: a service that runs under another account must be able
// to connect back to a reply pipe, so every local account may. Remote clients are refused by the pipe itself. Logs the
// failing step and returns false.
bool CreateSecurityAttributesWithoutACLs(wrb::OpenSecurity& security);
