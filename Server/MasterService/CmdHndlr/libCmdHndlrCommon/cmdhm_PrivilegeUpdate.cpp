#include "cmdhm_PrivilegeUpdate.h"

#include "DebugLog.h"
#include "SwitchField.h"
#include "UidField.h"

bool cmdhm_SetPrivileges(CCmdProtocol& message, const wchar_t* uid, std::span<const wrb::DbPrivilegeBit> bits) {
    const wrb::UidField field(uid);
    if (field.IsEmpty()) {
        WRB_LOG(kLogError, L"%s - UID is empty", L"cmdhm_SetPrivileges");
        return false;
    }
    wrb::DbPrivilege value;
    wrb::DbPrivilege mask;
    for (const wrb::DbPrivilegeBit bit : bits) {
        wrb::AddPrivilege(mask, bit);
        if (wrb::ReadSwitch(message)) {
            wrb::AddPrivilege(value, bit);
        }
    }
    return dbSetPrivilegeW(field.CStr(), value, mask);
}
