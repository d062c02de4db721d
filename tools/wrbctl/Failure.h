#pragma once

#include <string>

#include "Console.h"
#include "ExitCode.h"
#include "SystemText.h"

namespace wrb {

// Prints the error to the standard error and returns the exit code to end with.
inline int Fail(ExitCode code, const std::string& message) {
    PrintErr("wrbctl: " + message + "\n");
    return code;
}

inline int FailSystem(ExitCode code, const std::string& message, unsigned long error) {
    return Fail(code, message + ": " + SystemText(error));
}

}  // namespace wrb
