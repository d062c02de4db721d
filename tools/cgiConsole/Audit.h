// The trail of what people change by the console.
#pragma once

#include <string>
#include <vector>

#include "Request.h"

namespace wrb {

struct AuditEntry {
    std::wstring setting;
    std::wstring before;
    std::wstring after;
};

// One row each for the request's user. `target` is an agent's uid, or says what else was changed. A row that the
// database server does not take is in the debug log.
void AddAudit(const Request& request, const std::wstring& target, const std::vector<AuditEntry>& entries);

}  // namespace wrb
