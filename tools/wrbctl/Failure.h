#pragma once

#include <string>

#include "Console.h"
#include "ExitCode.h"

namespace wrb {

// Says on the standard error what went wrong, and returns the exit code to end with.
inline int Fail(ExitCode code, const std::string& message) {
    PrintErr("wrbctl: " + message + "\n");
    return code;
}

}  // namespace wrb
