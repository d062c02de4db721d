// Web threat protection: the one bundle whose texts travel protected.
#include <optional>

#include "BundleContainers.h"
#include "DbAgent.h"
#include "DbBundle.h"
#include "DebugLog.h"
#include "INICache.h"
#include "OSException.h"
#include "StringProtection.h"
#include "UidField.h"
#include "cmdhm_Bundles.h"

namespace {

constexpr const wchar_t* kName = L"cmdhm_GetWtpSetting";
constexpr const wchar_t* kKeySection = L"INI_SERVER_SECTION";
constexpr const wchar_t* kKeyName = L"StringProtectionKey";

bool HasAddresses(const wrb::WtpValues& values) {
    return wrb::HasIniItem(values.approvedIn) || wrb::HasIniItem(values.approvedOut) ||
           wrb::HasIniItem(values.blockedIn) || wrb::HasIniItem(values.blockedOut);
}

std::optional<wrb::ProtectionKey> ReadKey() {
    // One more than a key and its terminator need, so that a key that is too long shows.
    wchar_t text[sizeof(wrb::ProtectionKey) * 2 + 2] = {};
    ServerIniCache().readINIString(text, kKeySection, kKeyName, L"", static_cast<uint32_t>(std::size(text)));
    const auto key = wrb::ParseProtectionKey(text);
    if (!key) {
        WRB_LOG(kLogError, L"%s - the server INI has no key of 64 hexadecimal digits: [%s] %s", kName, kKeySection,
                kKeyName);
    }
    return key;
}

// The section, or nothing: an agent is to keep what it has rather than get its lists in the clear, or get none.
std::optional<std::wstring> Render(const wrb::UidField& uid, const tagClientWCSConfig& cfg) {
    std::optional<wrb::StringProtection> protection;
    std::wstring section;
    try {
        if (HasAddresses(cfg)) {
            const auto key = ReadKey();
            if (!key) {
                return std::nullopt;
            }
            protection.emplace(*key);
        }
        CSettingContainerWtpSetting container([&](std::wstring_view item) { return protection->Protect(item); });
        container.m_uid = uid.View();
        container.m_content = cfg;
        container.ExportToIni(section);
    } catch (const OS::CException& error) {
        WRB_LOG(kLogError, L"%s - cannot protect the addresses: %S", kName, error.what());
        return std::nullopt;
    }
    return section;
}

}  // namespace

bool cmdhm_GetWtpSetting(std::wstring& out, const wchar_t* pszUid, bool bResetCfgFlag) {
    const wrb::UidField uid(pszUid);
    WRB_LOG(kLogDebug8, L"cmdhm_GetWtpSetting(pszUid=%s, bResetCfgFlag=%d)", uid.CStr(),
            static_cast<int>(bResetCfgFlag));
    tagClientWCSConfig cfg;
    if (!dbGetClientWcsCfgW(uid.CStr(), cfg, kName)) {
        WRB_LOG(kLogDebug8, L"failed to send command to DB server");
        return false;
    }
    const std::optional<std::wstring> section = Render(uid, cfg);
    if (!section) {
        return false;
    }
    out += *section;
    if (bResetCfgFlag) {
        dbSetConfFlagW(uid.CStr(), 0, kWtpConfigFlag);
    }
    return true;
}
