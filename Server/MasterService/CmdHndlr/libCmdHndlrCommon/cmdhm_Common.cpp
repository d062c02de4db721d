#include "cmdhm_Common.h"

#include <algorithm>

#include "AgentProtection.h"
#include "AgentUid.h"
#include "DbPrivilege.h"
#include "DebugLog.h"
#include "INICache.h"
#include "IniText.h"
#include "IniValues.h"
#include "KeyedSettings.h"
#include "LegacyText.h"
#include "OSException.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kUninstallPassword = L"Uninstall_Pwd";
constexpr std::wstring_view kUnloadPassword = L"Unload_Pwd";
constexpr std::wstring_view kProxyPassword = L"Proxy_Pwd";

void ReadIni(KeyedSettings& settings) {
    settings.ForEach([](const wchar_t* section, const SettingKey& key, SettingValue& value) {
        if (key.kind == KeyKind::Text) {
            value.text = ReadIniText(ScanIniCache(), section, key.name);
            return;
        }
        const uint32_t number = ScanIniCache().readINIInt(section, key.name, 0);
        value.number = key.kind == KeyKind::Number ? number : static_cast<int32_t>(number) > 0 ? 1 : 0;
    });
}

bool ReadPassword(const std::wstring& uid, int kind, std::wstring& password) {
    return dbGetClientPasswordW(uid + L'\t' + std::to_wstring(kind), password);
}

// Puts the agent's own values in place of the server's.
bool ReadAgent(KeyedSettings& settings) {
    DbPrivilege privilege;
    std::wstring uninstall;
    std::wstring unload;
    if (!dbGetPrivilegeW(settings.m_uid.c_str(), privilege) || !ReadPassword(settings.m_uid, 0, uninstall) ||
        !ReadPassword(settings.m_uid, 1, unload)) {
        return false;
    }
    settings.ForEach([&](const wchar_t*, const SettingKey& key, SettingValue& value) {
        if (const std::optional<DbPrivilegeBit> bit = FindPrivilege(key.name)) {
            value.number = HasPrivilege(privilege, *bit) ? 1 : 0;
        } else if (key.name == kUninstallPassword) {
            value.text = uninstall;
        } else if (key.name == kUnloadPassword) {
            value.text = unload;
        }
    });
    return true;
}

// Without a key the proxy's password stays here: agents must not get it in the clear.
std::wstring EncryptForAgents(const std::wstring& password) {
    const std::optional<ProtectionKey> key = ReadProtectionKey();
    if (!key) {
        return {};
    }
    LegacyDesKey desKey;
    std::copy_n(key->begin(), desKey.size(), desKey.begin());
    return LegacyDesText(password, desKey);
}

// An empty password stays empty: it says that there is none.
void HidePasswords(KeyedSettings& settings) {
    settings.ForEach([](const wchar_t*, const SettingKey& key, SettingValue& value) {
        if (value.text.empty()) {
            return;
        }
        if (key.name == kUninstallPassword || key.name == kUnloadPassword) {
            value.text = LegacyMd5Text(value.text);
        } else if (key.name == kProxyPassword) {
            value.text = EncryptForAgents(value.text);
        }
    });
}

}  // namespace

bool GetIniSection(std::wstring& out, const wchar_t* section) {
    std::wstring lines;
    if (!ScanIniCache().readINISection(lines, section)) {
        WRB_LOG(kLogError, L"%s - the section [%s] has more than %u characters", L"GetIniSection", section,
                kLongestSection);
        return false;
    }
    AppendIniSection(out, section);
    out += lines;
    return true;
}

bool GetCriticalSetting(std::wstring& out, const wchar_t* uid) {
    CSettingContainerCriticalSetting settings;
    settings.m_uid = CutUid(uid);
    ReadIni(settings);
    if (!settings.m_uid.empty() && !ReadAgent(settings)) {
        return false;
    }
    try {
        HidePasswords(settings);
    } catch (const OS::CException& error) {
        WRB_LOG(kLogError, L"%s - cannot encode the passwords: %s", L"GetCriticalSetting",
                Utf8ToWide(error.what()).c_str());
        return false;
    }
    settings.ExportToIni(out);
    return true;
}

bool GetComponentVersions(std::wstring& out) {
    CSettingContainerComponentVersion settings;
    ReadIni(settings);
    settings.ExportToIni(out);
    return true;
}

}  // namespace wrb
