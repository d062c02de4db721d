// The parts that serve: the host, the back end, their pipes, the database behind them.
#pragma once

#include "StatusItem.h"

namespace wrb {

// The host and the database are a warning when they take more than a second.

// Down when it does not run, or does not answer an echo within two seconds. The echo is a command like any other.
StatusItem CheckHost();

// Down when it does not run.
StatusItem CheckBackEnd();

// One item each for the five pipes of the services: down when nobody serves it. Looks without connecting.
StatusItems CheckPipes();

// Down when the database server does not answer a question within two seconds, or answers it empty.
StatusItem CheckDatabase();

}  // namespace wrb
