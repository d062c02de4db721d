// What is told of an agent's report that the services did not take whole.
#pragma once

#include <string>

#include "CounterScope.h"

namespace wrb {

// Counts it, and logs one line at level 'E' in the name of `handler`. Nothing when nothing is lost.
void ReportUndelivered(CounterCall& call, const wchar_t* handler, const std::wstring& uid,
                       const Undelivered& lost) noexcept;

}  // namespace wrb
