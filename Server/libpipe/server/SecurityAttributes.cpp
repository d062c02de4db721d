#include "SecurityAttributes.h"

#include "DebugLog.h"

bool CreateSecurityAttributesWithoutACLs(wrb::OpenSecurity& security) {
    const wchar_t* const failedCall = wrb::InitOpenSecurity(security);
    if (failedCall != nullptr) {
        WRB_LOG(kLogError, L"[CreateSecurityAttributesWithoutACLs] %s failed! err=%d", failedCall, GetLastError());
    }
    return failedCall == nullptr;
}
