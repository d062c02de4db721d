// The exit codes of every program of the project.
#pragma once

namespace wrb {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailed = 1,
    kExitUsage = 2,              // the command line, or a file that it names, is wrong
    kExitServiceNotRunning = 3,  // the pipe, section or event that was asked for does not exist
    kExitTimedOut = 4,
};

}  // namespace wrb
