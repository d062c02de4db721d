#include "cmdhm_Bundles.h"

#include <array>

#include "AgentProtection.h"
#include "AgentUid.h"
#include "BundleContainers.h"
#include "DbAgent.h"
#include "DbBundle.h"
#include "DebugLog.h"

namespace wrb {
namespace {

// The getter without what only a traced one logs.
template <typename Values>
bool AskAndRender(std::wstring& section, const std::wstring& uid, bool bResetCfgFlag) {
    constexpr BundleLog log = kBundle<Values>.log;
    AgentProtection protection(log.getter);
    BundleContainer<Values> container([&](std::wstring_view item) { return protection.Protect(item); });
    WRB_LOG(kLogDebug8, log.enter, log.getter, uid.c_str(), static_cast<int>(bResetCfgFlag));
    if (!AskDbBundle<Values>(uid.c_str(), container.m_content, log.getter)) {
        WRB_LOG(kLogDebug8, log.failed, log.getter);
        return false;
    }
    container.m_uid = uid;
    container.ExportToIni(section);
    if (log.traced) {
        WRB_LOG(kLogDebug8, L"%s - strOutput = %s", log.getter, section.c_str());
    }
    return !protection.Failed();
}

template <typename Values>
bool Get(std::wstring& out, const wchar_t* pszUid, bool bResetCfgFlag) {
    constexpr Bundle<Values> bundle = kBundle<Values>;
    const std::wstring uid = CutUid(pszUid);
    std::wstring section;
    if (bundle.log.traced) {
        WRB_LOG(kLogDebug8, L"%s - >>>", bundle.log.getter);
    }
    const bool made = AskAndRender<Values>(section, uid, bResetCfgFlag);
    if (bundle.log.traced) {
        WRB_LOG(kLogDebug8, L"%s - <<<", bundle.log.getter);
    }
    if (!made) {
        return false;
    }
    out += section;
    if (bResetCfgFlag && bundle.configBit != 0) {
        dbSetConfFlagW(uid.c_str(), 0, bundle.configBit);
    }
    return true;
}

using Getter = bool (*)(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

template <typename... Values>
constexpr std::array<Getter, sizeof...(Values)> GettersOf(const std::tuple<Values...>*) {
    return {Get<Values>...};
}
constexpr auto kGetters = GettersOf(static_cast<const Bundles*>(nullptr));

}  // namespace

bool GetBundleAt(std::size_t place, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    return kGetters[place](out, uid, bResetCfgFlag);
}

}  // namespace wrb
