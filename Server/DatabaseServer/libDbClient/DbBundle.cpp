#include "DbBundle.h"

#include <utility>

#include "DbPrivilege.h"
#include "DbScanCfg.h"

bool wrb::AskDbFields(DbCommand command, const wchar_t* uid, const wchar_t* caller, CCmdProtocol& fields) noexcept {
    return GuardCall(WRB_HERE, caller, [&] {
        const DbCommandRow& row = DescribeDbCommand(command);
        std::wstring answer;
        const bool answered =
            *row.requestFields == '\0' ? AskDbText(row.name, answer) : AskDbText(row.name, answer, uid);
        return answered && OpenDbRecord(answer, row.name, fields);
    });
}

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

template <>
bool wrb::AskDbBundle<wrb::SpywareWhiteListValues>(const wchar_t* uid, BundleRecordList<SpywareWhiteListValues>& list,
                                                   const wchar_t* caller) noexcept {
    std::vector<std::wstring> items;
    return dbGetSpywareWhiteListW(uid, items) && GuardCall(WRB_HERE, caller, [&] {
               for (std::wstring& item : items) {
                   list.items.emplace_back(SpywareWhiteListValues{std::move(item)});
               }
               return true;
           });
}
