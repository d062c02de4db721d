// The service's side of the service manager.
#pragma once

#include <functional>

#include "ServiceSpec.h"

namespace wrb {

// Runs `serve` as the main function of the service, on a thread of the service manager's, with the home folder as the
// current one. Returns when the service has ended: the exit code of `serve`, or kExitFailed when the service manager
// has not started this process. While the service starts or stops, the manager gets a sign of life every second. A stop
// and the preparation of a shut-down set the stop event (StopEvent.h). Called once in a process.
int RunAsService(const ServiceSpec& spec, const std::function<int()>& serve);

// The functions below do nothing on a console. Any thread.

bool RunsAsService();
void ReportRunning();
void ReportStopping();
void ReportFault(StartFault fault);  // becomes the exit code of the service

// For a program that ends at once: the manager must not take it for a crash.
void ReportStopped();

}  // namespace wrb
