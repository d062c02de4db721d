#include "Audit.h"

#include <algorithm>

#include "DbListing.h"
#include "DebugLog.h"

namespace wrb {
namespace {

// A field of the message ends at a TAB, the message at a NUL.
std::wstring Field(std::wstring text) {
    std::ranges::replace_if(
        text, [](wchar_t character) { return character < L' '; }, L' ');
    return text;
}

}  // namespace

void AddAudit(const Request& request, const std::wstring& target, const std::vector<AuditEntry>& entries) {
    for (const AuditEntry& entry : entries) {
        WRB_LOG(kLogInfo, L"%s - %s changed %s of %s from [%s] to [%s]", L"AddAudit", request.User().c_str(),
                entry.setting.c_str(), target.c_str(), entry.before.c_str(), entry.after.c_str());
        const DbAudit change{Field(request.User()), Field(target), Field(entry.setting), Field(entry.before),
                             Field(entry.after)};
        if (!WriteDbAudit(change)) {
            WRB_LOG(kLogError, L"%s - the database server did not take this change for the audit", L"AddAudit");
        }
    }
}

}  // namespace wrb
