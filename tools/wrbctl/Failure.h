#pragma once

#include <windows.h>

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

// For a pipe, or a section, that a program makes while it runs. `absent` says that the program does not run, `what`
// that the object cannot be opened although it exists.
inline int FailToOpen(const std::string& absent, const std::string& what, unsigned long error) {
    return error == ERROR_FILE_NOT_FOUND ? Fail(kExitServiceNotRunning, absent) : FailSystem(kExitFailed, what, error);
}

}  // namespace wrb
