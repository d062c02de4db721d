// The setting bundles of an agent: small groups of settings, a record and a command each. docs/wire-formats.md gives
// the records field by field.
//
// `caller` is the asking function's name, for the server's log; `uid` is cut to 36 characters, but not for sample
// submission, whose request is a text. True when the answer could be read; false, with a log line, when the request
// failed, the agent is not known or the answer is malformed: the record is then not to be used. An agent without
// settings of its own has a record of zeros and empty texts. None throws. Waits at most 600 seconds.
#pragma once

#include <cstdint>

#include "BundleValues.h"
#include "SettingRecord.h"

using tagClientWCSConfig = wrb::SettingRecord<wrb::WtpValues>;
using tagClientNCIECfg = wrb::SettingRecord<wrb::NcieValues>;
using tagClientSampleSubmissionCfg = wrb::SettingRecord<wrb::SampleSubmissionValues>;
using tagClientSablexConfig = wrb::SettingRecord<wrb::SablexValues>;
using tagClientAggrScanConfig = wrb::SettingRecord<wrb::AggrScanValues>;

using tagFARestoreItem = wrb::SettingRecord<wrb::FARestoreValues>;

namespace wrb {

using FARestoreItemList = wrb::SettingRecordList<tagFARestoreItem>;

using PolicyTrackingInfo = wrb::SettingRecord<PolicyTrackingValues>;

using PolicyTrackingInfoList = wrb::SettingRecordList<PolicyTrackingInfo>;

}  // namespace wrb

// The configuration-changed bits of the two bundles that have one (DB_SET_CONF_FLAG).
inline constexpr uint32_t kWtpConfigFlag = 0x20000;
inline constexpr uint32_t kFARestoreConfigFlag = 0x40000;

bool dbGetClientWcsCfgW(const wchar_t* uid, tagClientWCSConfig& cfg, const wchar_t* caller) noexcept;
bool dbGetClientNcieCfgW(const wchar_t* uid, tagClientNCIECfg& cfg, const wchar_t* caller) noexcept;
bool dbGetSablexCfgW(const wchar_t* uid, tagClientSablexConfig& cfg, const wchar_t* caller) noexcept;
bool dbGetAggrScanCfgW(const wchar_t* uid, tagClientAggrScanConfig& cfg, const wchar_t* caller) noexcept;
bool dbGetPolicyTrackingInfoW(const wchar_t* uid, wrb::PolicyTrackingInfoList& policies,
                              const wchar_t* caller) noexcept;

// Logs a failure in its own name too.
bool dbGetFARestoreItem(const wchar_t* uid, wrb::FARestoreItemList& items, const wchar_t* caller) noexcept;

// Not stored by itself: a bit of the privilege words (DbPrivilege.h), read with DB_GET_PRIVILEGE.
bool dbGetSampleSubmissionCfgW(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg) noexcept;
