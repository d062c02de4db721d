// The setting bundles of an agent: the question to the database. docs/wire-formats.md gives the records field by field.
//
// `caller` is the asking function's name, for the server's log. `uid` is cut to 36 characters in messages, not in text
// commands. True when the answer could be read; false, with a log line, when the request
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

// The fields of a text answer. The request has the uid when the command's row has any field. False for an empty answer.
bool AskDbFields(DbCommand command, const wchar_t* uid, const wchar_t* caller, CCmdProtocol& fields) noexcept;

// A bundle of a text command has numbers only, a field each in the order of its rows. A missing field is 0.
template <typename Values>
bool AskDbNumbers(const wchar_t* uid, Values& values, const wchar_t* caller) noexcept {
    CCmdProtocol fields;
    if (!AskDbFields(kBundleCommand<Values>, uid, caller, fields)) {
        return false;
    }
    for (const BundleRow<Values>& row : kBundle<Values>.rows) {
        uint32_t number = 0;
        fields >> number;
        SetNumber(row, number, values);
    }
    return true;
}

template <typename Values>
bool AskDbBundle(const wchar_t* uid, BundleContent<Values>& content, const wchar_t* caller) noexcept {
    bool answered = false;
    if constexpr (DescribeDbCommand(kBundleCommand<Values>).answer == DbAnswer::Message) {
        answered = ReadDbMessage(kBundleCommand<Values>, uid, caller, content);
    } else {
        answered = AskDbNumbers<Values>(uid, content, caller);
    }
    if (!answered && kBundle<Values>.log.reader != nullptr) {
        WRB_LOG(kLogDebug8, L"%s - failed to send command to DB server", kBundle<Values>.log.reader);
    }
    return answered;
}

// Sample submission is a bit of the privilege words (DbPrivilege.h), whose command is a text.
template <>
bool AskDbBundle<SampleSubmissionValues>(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg,
                                         const wchar_t* caller) noexcept;

// The approved list is read by dbGetSpywareWhiteListW.
template <>
bool AskDbBundle<SpywareWhiteListValues>(const wchar_t* uid, BundleRecordList<SpywareWhiteListValues>& list,
                                         const wchar_t* caller) noexcept;

}  // namespace wrb

// The same by name, an instance each.
inline constexpr auto dbGetClientWcsCfgW = wrb::AskDbBundle<wrb::WtpValues>;
inline constexpr auto dbGetFARestoreItem = wrb::AskDbBundle<wrb::FARestoreValues>;
inline constexpr auto dbGetClientNcieCfgW = wrb::AskDbBundle<wrb::NcieValues>;
inline constexpr auto dbGetSablexCfgW = wrb::AskDbBundle<wrb::SablexValues>;
inline constexpr auto dbGetAggrScanCfgW = wrb::AskDbBundle<wrb::AggrScanValues>;
