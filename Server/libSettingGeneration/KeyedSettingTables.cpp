#include "KeyedSettings.h"

namespace {

using enum wrb::KeyKind;
using wrb::KeyedSection;
using wrb::SettingKey;

constexpr SettingKey kCriticalKeys[] = {
    {L"Master_DomainName", Text},
    {L"Master_DomainPort", Number},
    {L"Master_SSLPort", Number},
    {L"UseProxy", Switch},
    {L"Proxy_IP", Text},
    {L"Proxy_Port", Number},
    {L"Proxy_Login", Text},
    {L"Proxy_Pwd", Text},
    {L"Intranet_Proxy_Socks", Switch},
    {L"Intranet_NoProxyCache", Switch},
    {L"HTTP_Expired_Day", Number},
    {L"Uninstall_Pwd", Text},
    {L"Unload_Pwd", Text},
    {L"Uninst", Switch},
    {L"Unload", Switch},
    {L"AllowUpdateFromCWAU", Switch},
    {L"AllowUpdateFromOtherAU", Switch},
    {L"Master_Program_URL", Text},
    {L"Calloway_AU_Master_Program_URL", Text},
    {L"Mobile", Switch},
    {L"AllowScheduleUpdate", Switch},
    {L"UseHttp", Switch},
    {L"AllowStopScheduleScan", Switch},
    {L"AllowDelayScheduleScan", Switch},
    {L"AllowCfgNotification", Switch},
    {L"EnableScheduleScanWarning", Switch},
    {L"EnableVirEmailWarning", Switch},
    {L"ClnAlertEnabled", Switch},
    {L"SablxAlertEnabled", Switch},
    {L"AllowPromptRebootForCleanup", Switch},
    {L"MailScanPageOnOff", Switch},
    {L"EnablePop3MailScan", Switch},
    {L"UrlFilterAlertEnabled", Switch},
    {L"AllowUpdateNow", Switch},
    {L"ActAsUpdateAgent", Switch},
    {L"ProvideUpdateAgentComponentService", Switch},
    {L"ProvideUpdateAgentSettingService", Switch},
    {L"ProvideUpdateAgentProgramService", Switch},
    {L"ProxySettingOnOff", Switch},
    {L"AllowControlPFW", Switch},
    {L"AllowSendPFWLog", Switch},
    {L"DisplayPFWTab", Switch},
    {L"Security", Switch},
    {L"ScheduleUpdateEnableDisable", Switch},
    {L"NoProgramUpgrade", Switch},
    {L"NoEngineUpgrade", Switch},
    {L"AllowCfg", Switch},
    {L"AllowCfgBM", Switch},
    {L"SendBMLog", Switch},
    {L"BMPopupAlert", Switch},
    {L"SP_EnableFileProtection", Switch},
    {L"SP_EnableRegistryKeyProtection", Switch},
    {L"SP_EnableProcessProtection", Switch},
    {L"ECSP", Switch},
    {L"FAPopupAlert", Switch},
    {L"GCLCacheEnable", Switch},
    {L"GCLCacheRebuildDays", Number},
    {L"OdscEnable", Switch},
    {L"OdscCriteriaDays", Number},
    {L"OdscMaxExpiredDays", Number},
    {L"DlpDeploy", Switch},
    {L"TrustedProgram", Text},
    {L"MDRSetting", Text},
    {L"ServicePack_Version", Text},
};

constexpr SettingKey kScheduleKeys[] = {
    {L"ScheduleUpdateInterval", Number},     {L"ScheduleCheckGlobalSetting", Switch},
    {L"ScheduleUpdateStartWeekday", Number}, {L"ScheduleUpdateStartHour", Number},
    {L"ScheduleUpdateStartMin", Number},     {L"ScheduleUpdateCompletePeriod", Number},
};

constexpr SettingKey kComponentKeys[] = {
    {L"Ptnfile_Version", Text},
    {L"TSCPtn_Version", Text},
    {L"DCS_Spy_Ptn_Version", Text},
    {L"Trap_WhiteList_Version", Text},
    {L"Trap_BlackList_Version", Text},
    {L"SSAPI_Engine_Version", Text},
    {L"SSAPI_Engine_x64_Version", Text},
    {L"SSAPI_Pattern_Version", Text},
    {L"SSAPI_VSAPI_Spy_Pattern_Version", Text},
    {L"Rootkit_Common_Module_Version", Text},
    {L"TSCEng_Version", Text},
    {L"SpyWarePtn_Version", Text},
    {L"CTAPrg_Version", Text},
    {L"CFWPtn_Version", Text},
    {L"CFWEngNT_Version", Text},
    {L"WFPEngNT_Version", Text},
    {L"PccNT_Version", Text},
    {L"EngineNT_Version", Text},
    {L"Hotfix", Text},
    {L"HotfixX86", Text},
    {L"HotfixX64", Text},
};

constexpr KeyedSection kCriticalSections[] = {{L"INI_CRITICAL_SECTION", kCriticalKeys},
                                              {L"INI_SCHEDULE_SECTION", kScheduleKeys}};
constexpr KeyedSection kComponentSections[] = {{L"INI_COMPONENT_VERSION_SECTION", kComponentKeys}};

}  // namespace

CSettingContainerCriticalSetting::CSettingContainerCriticalSetting() : KeyedSettings(kCriticalSections) {}

CSettingContainerComponentVersion::CSettingContainerComponentVersion() : KeyedSettings(kComponentSections) {}
