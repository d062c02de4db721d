#include "DbBundle.h"

#include "DbPrivilege.h"

template <>
bool wrb::AskDbBundle<wrb::SampleSubmissionValues>(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg,
                                                   const wchar_t* /*caller*/) noexcept {
    DbPrivilege privilege;
    if (!dbGetPrivilegeW(uid, privilege)) {
        return false;
    }
    cfg.flags = HasPrivilege(privilege, DbPrivilegeBit::SampleSubmission) ? SampleSubmissionValues::kEnable : 0;
    return true;
}
