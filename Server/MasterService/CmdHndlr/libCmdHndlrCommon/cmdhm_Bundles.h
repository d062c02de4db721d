// The setting bundles of one agent, a section each.
//
// A uid is cut to 36 characters; there is no server-wide form, but for the service switches, which are the same for
// every uid: without a uid the database knows no such agent. The section is appended to `out`; after a failure `out` is
// as it was. With bResetCfgFlag the bundle's configuration-changed bit, if it has one, is cleared once the section has
// been made. False: the request failed, the agent is not known, or the items of a protected list cannot be protected;
// the log says which. Throws only for lack of memory. Any thread; a call waits for the database as long as that takes,
// at most 600 seconds.
#pragma once

#include <cstddef>
#include <string>

#include "Bundles.h"

namespace wrb {

// The bundle at this place of the list in Bundles.h.
bool GetBundleAt(std::size_t place, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

template <typename Values>
bool GetBundle(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    return GetBundleAt(kBundlePlace<Values>, out, uid, bResetCfgFlag);
}

// The same, with the bit left as it is.
template <typename Values>
bool ReadBundle(std::wstring& out, const wchar_t* pszUid) {
    return GetBundle<Values>(out, pszUid, false);
}

}  // namespace wrb

// The same by name, an instance each.
inline constexpr auto cmdhm_GetWtpSetting = wrb::GetBundle<wrb::WtpValues>;
inline constexpr auto cmdhm_GetFARestoreSetting = wrb::GetBundle<wrb::FARestoreValues>;
inline constexpr auto cmdhm_GetNCIESetting = wrb::ReadBundle<wrb::NcieValues>;
inline constexpr auto cmdhm_GetSampleSubmissionSetting = wrb::ReadBundle<wrb::SampleSubmissionValues>;
inline constexpr auto cmdhm_GetSablexSetting = wrb::ReadBundle<wrb::SablexValues>;
inline constexpr auto cmdhm_GetAggrScanSetting = wrb::ReadBundle<wrb::AggrScanValues>;
inline constexpr auto cmdhm_GetQMAgentPolicyInfo = wrb::ReadBundle<wrb::PolicyTrackingValues>;
inline constexpr auto cmdhm_GetServiceSwitch = wrb::ReadBundle<wrb::ServiceSwitchValues>;
inline constexpr auto cmdhm_GetScanType = wrb::ReadBundle<wrb::ScanTypeValues>;
inline constexpr auto cmdhm_GetSpywareWhiteList = wrb::ReadBundle<wrb::SpywareWhiteListValues>;
