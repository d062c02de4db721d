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
inline constexpr auto dbGetClientWcsCfgW = wrb::AskDbBundle<wrb::WtpValues>;
inline constexpr auto dbGetFARestoreItem = wrb::AskDbBundle<wrb::FARestoreValues>;
inline constexpr auto dbGetClientNcieCfgW = wrb::AskDbBundle<wrb::NcieValues>;
inline constexpr auto dbGetSablexCfgW = wrb::AskDbBundle<wrb::SablexValues>;
inline constexpr auto dbGetAggrScanCfgW = wrb::AskDbBundle<wrb::AggrScanValues>;
