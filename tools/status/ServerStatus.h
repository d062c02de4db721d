// The whole server at one look.
#pragma once

#include "StatusItem.h"

namespace wrb {

// Takes some milliseconds, and about two seconds for each program that hangs. Any thread.
StatusItems ReadServerStatus();

}  // namespace wrb
