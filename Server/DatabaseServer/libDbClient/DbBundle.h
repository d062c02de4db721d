// The setting bundles of an agent: the question to the database. docs/wire-formats.md gives the records field by field.
//
// `caller` is the asking function's name, for the server's log; `uid` is cut to 36 characters, but not for sample
// submission, whose request is a text. True when the answer could be read; false, with a log line, when the request
// failed, the agent is not known or the answer is malformed: the content is then not to be used. An agent without
// settings of its own has a record of zeros and empty texts. None throws. Waits at most 600 seconds.
#pragma once

#include "BundleRecord.h"
#include "DbRequest.h"
#include "DebugLog.h"

namespace wrb {

// Does not compile for a bundle whose command has no row in DbCommands.inc.
template <typename Values>
inline constexpr DbCommand kBundleCommand = *FindDbCommand(kBundle<Values>.command);

template <typename Values>
bool AskDbBundle(const wchar_t* uid, BundleContent<Values>& content, const wchar_t* caller) noexcept {
    static_assert(DescribeDbCommand(kBundleCommand<Values>).answer == DbAnswer::Message);
    const bool answered = ReadDbMessage(kBundleCommand<Values>, uid, caller, content);
    if (!answered && kBundle<Values>.log.reader != nullptr) {
        WRB_LOG(kLogDebug8, L"%s - failed to send command to DB server", kBundle<Values>.log.reader);
    }
    return answered;
}

// Sample submission is a bit of the privilege words (DbPrivilege.h), whose command is a text.
template <>
bool AskDbBundle<SampleSubmissionValues>(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg,
                                         const wchar_t* caller) noexcept;

}  // namespace wrb

// The same by name, an instance each.
inline bool dbGetClientWcsCfgW(const wchar_t* uid, tagClientWCSConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::AskDbBundle<wrb::WtpValues>(uid, cfg, caller);
}
inline bool dbGetFARestoreItem(const wchar_t* uid, wrb::BundleContent<wrb::FARestoreValues>& items,
                               const wchar_t* caller) noexcept {
    return wrb::AskDbBundle<wrb::FARestoreValues>(uid, items, caller);
}
inline bool dbGetClientNcieCfgW(const wchar_t* uid, tagClientNCIECfg& cfg, const wchar_t* caller) noexcept {
    return wrb::AskDbBundle<wrb::NcieValues>(uid, cfg, caller);
}
inline bool dbGetSablexCfgW(const wchar_t* uid, tagClientSablexConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::AskDbBundle<wrb::SablexValues>(uid, cfg, caller);
}
inline bool dbGetAggrScanCfgW(const wchar_t* uid, tagClientAggrScanConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::AskDbBundle<wrb::AggrScanValues>(uid, cfg, caller);
}
