// What every program of the project returns to its caller.
#pragma once

namespace wrb {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailed = 1,
    kExitUsage = 2,              // the command line, or a file that it names, is wrong
    kExitServiceNotRunning = 3,  // nobody serves the pipe, section or event that was asked for
    kExitTimedOut = 4,
};

}  // namespace wrb
