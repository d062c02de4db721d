#include "TextCommandTable.h"

namespace wrb {
namespace {

using enum DbCommand;

// ---- where ----

constexpr char kNone[] = "";
constexpr char kAgent[] = " WHERE uid = :uid";
constexpr char kScan[] = " WHERE type = @type AND uid = :uid";
constexpr char kAllScans[] = " WHERE type = @type";
constexpr char kInOrder[] = " WHERE uid = :uid ORDER BY position";

// ---- request fields ----

constexpr char kByUid[] = ":uid -";
constexpr char kMainFields[] = ":uid @value @mask @compressed @ole @possible :ext :move :action -";
constexpr char kAllMainFields[] = "@value @mask @compressed @ole @possible :ext :move :action -";
constexpr char kScheduledFields[] =
    ":uid @value @mask @compressed @ole @possible @frequency @hour @minute @amPm @dayOfMonth @dayOfWeek @weekOrdinal "
    "@weekday :ext :move :action -";
constexpr char kAllScheduledFields[] =
    "@value @mask @compressed @ole @possible @frequency @hour @minute @amPm @dayOfMonth @dayOfWeek @weekOrdinal "
    "@weekday :ext :move :action -";
constexpr char kSpywareFields[] = ":uid @value @mask :list -";
constexpr char kAllSpywareFields[] = "@value @mask :list -";
constexpr char kRealTimeSpywareFields[] = ":uid @value @mask -";
constexpr char kAllRealTimeSpywareFields[] = "@value @mask -";
constexpr char kFlagFields[] = ":uid @value @mask";
constexpr char kAllFlagFields[] = "@value @mask";

// ---- reads ----

constexpr char kReadMain[] = "SELECT flags, compressed_layer, ole_layer, possible_virus_action FROM scan";
constexpr char kReadScheduled[] =
    "SELECT flags, compressed_layer, ole_layer, possible_virus_action, frequency, hour, minute, am_pm, day_of_month, "
    "day_of_week, week_ordinal_of_month, weekday_of_month FROM scan";
constexpr char kReadSpyware[] = "SELECT spyware_flags, exclude_file_ext_list FROM scan";
constexpr char kReadRealTimeSpyware[] = "SELECT spyware_flags FROM scan";
constexpr char kReadMainTexts[] = "SELECT ext_list, move_dir, '', '', cust_action FROM scan";
constexpr char kReadExclusions[] = "SELECT excluded_folder, excluded_file, excluded_ext FROM scan";

// ---- writes ----

#define WRB_FLAGS(column) column " = (" column " & ~@mask) | (@value & @mask)"
#define WRB_MAIN \
    "UPDATE scan SET " WRB_FLAGS("flags") ", compressed_layer = @compressed, ole_layer = @ole, "        \
    "possible_virus_action = @possible, ext_list = :ext, move_dir = :move, cust_action = :action"
constexpr char kSetMain[] = WRB_MAIN;
constexpr char kSetScheduled[] = WRB_MAIN
    ", frequency = @frequency, hour = @hour, minute = @minute, am_pm = @amPm, day_of_month = @dayOfMonth, "
    "day_of_week = @dayOfWeek, week_ordinal_of_month = @weekOrdinal, weekday_of_month = @weekday";
constexpr char kSetSpyware[] = "UPDATE scan SET " WRB_FLAGS("spyware_flags") ", exclude_file_ext_list = :list";
constexpr char kSetRealTimeSpyware[] = "UPDATE scan SET " WRB_FLAGS("spyware_flags");
constexpr char kSetExclusions[] =
    "UPDATE scan SET excluded_folder = :folder, excluded_file = :file, excluded_ext = :ext";
constexpr char kSetFlags[] = "UPDATE scan SET " WRB_FLAGS("flags");
constexpr char kSetChanged[] = "UPDATE agent SET changed = (changed | @set) & ~@clear";
constexpr char kSetPrivilege[] =
    "UPDATE agent SET privilege1 = (privilege1 & ~@mask1) | (@value1 & @mask1), "
    "privilege2 = (privilege2 & ~@mask2) | (@value2 & @mask2)";
#undef WRB_MAIN
#undef WRB_FLAGS
constexpr char kSetFirewallCounts[] =
    "UPDATE agent SET firewall_number = $number, firewall_count1 = @c1, firewall_count2 = @c2, firewall_count3 = @c3, "
    "firewall_count4 = @c4, firewall_count5 = @c5, firewall_count6 = @c6, firewall_time = $time";
constexpr char kAddAudit[] =
    "INSERT INTO audit (changed_at, user_name, target, setting, old_value, new_value) "
    "VALUES ($now, :user, :target, :setting, :old, :new)";
constexpr char kAddSpecialLog[] =
    "INSERT INTO special_log (uid, log_type, text, received) SELECT uid, @kind, :text, $now FROM agent";

constexpr TextCommandRow kRows[] = {
    {GetStatus, ScanOf::None, ":uid @word", "SELECT CASE @word WHEN 1 THEN status2 ELSE status1 END FROM agent",
     kAgent},
    {GetArchitecture, ScanOf::None, kByUid, "SELECT architecture FROM agent", kAgent},
    {GetConfFlag, ScanOf::None, kByUid, "SELECT changed FROM agent", kAgent},
    {GetClientPlat, ScanOf::None, kByUid, "SELECT platform FROM agent", kAgent},
    {GetClnDomainNameAndUid, ScanOf::None, kByUid, "SELECT domain_name, domain_uid FROM agent", kAgent},
    {GetClnFullDomainNameAndUid, ScanOf::None, kByUid, "SELECT domain_path, domain_uid FROM agent", kAgent},
    {DbCommand::GetComputername, ScanOf::None, kByUid, "SELECT computer FROM agent", kAgent},
    {GetIp, ScanOf::None, kByUid, "SELECT ip FROM agent", kAgent},
    {GetProgVer, ScanOf::None, kByUid, "SELECT program_version FROM agent", kAgent},
    {GetMscf, ScanOf::MS, kByUid, kReadMain, kScan},
    {GetRtcf, ScanOf::RT, kByUid, kReadMain, kScan},
    {GetPscf, ScanOf::PS, kByUid, kReadScheduled, kScan},
    {GetSncf, ScanOf::SN, kByUid, kReadMain, kScan},
    {GetSpywareMscf, ScanOf::MS, kByUid, kReadSpyware, kScan},
    {GetSpywareRtcf, ScanOf::RT, kByUid, kReadRealTimeSpyware, kScan},
    {GetSpywarePscf, ScanOf::PS, kByUid, kReadSpyware, kScan},
    {GetSpywareSncf, ScanOf::SN, kByUid, kReadSpyware, kScan},
    {GetSpywareWhiteList, ScanOf::None, kByUid, "SELECT item FROM spyware_approved", kInOrder},
    {GetBackupLogAllSessions, ScanOf::None, kByUid, "SELECT session FROM restore_session", kInOrder},
    {GetExtra, ScanOf::MainBit, ":uid bit", kReadMainTexts, kScan},
    {GetExtra, ScanOf::ExclusionBit, ":uid bit", kReadExclusions, kScan},
    {GetOppStatus, ScanOf::None, kByUid, "SELECT opp_status, opp_end FROM agent", kAgent},
    {GetPrivilege, ScanOf::None, kByUid, "SELECT privilege1, privilege2 FROM agent", kAgent},
    {GetVexorBmCfg, ScanOf::None, kByUid, "SELECT behaviour_text FROM agent", kAgent},
    {GetClientPassword, ScanOf::None, ":uid @kind",
     "SELECT CASE @kind WHEN 0 THEN uninstall_password WHEN 1 THEN unload_password ELSE '' END FROM agent", kAgent},
    {GetServiceSwitch, ScanOf::None, "", "SELECT enabled FROM service_switch ORDER BY position", kNone},
    {GetIcrcDestScanType, ScanOf::None, ":uid", "SELECT scan_method FROM agent", kAgent},
    {IsClientExisted, ScanOf::None, ":uid", "SELECT count(*) FROM agent WHERE uid = :uid", kNone},

    {SetMscf, ScanOf::MS, kMainFields, kSetMain, kScan},
    {SetRtcf, ScanOf::RT, kMainFields, kSetMain, kScan},
    {SetPscf, ScanOf::PS, kScheduledFields, kSetScheduled, kScan},
    {SetSncf, ScanOf::SN, kMainFields, kSetMain, kScan},
    {SetSpywareMscf, ScanOf::MS, kSpywareFields, kSetSpyware, kScan},
    {SetSpywareRtcf, ScanOf::RT, kRealTimeSpywareFields, kSetRealTimeSpyware, kScan},
    {SetSpywarePscf, ScanOf::PS, kSpywareFields, kSetSpyware, kScan},
    {SetSpywareSncf, ScanOf::SN, kSpywareFields, kSetSpyware, kScan},
    {SetExcludeList, ScanOf::ExclusionBit, ":uid bit :folder :file :ext", kSetExclusions, kScan},
    {SetMsFlg, ScanOf::MS, kFlagFields, kSetFlags, kScan},
    {SetRtFlg, ScanOf::RT, kFlagFields, kSetFlags, kScan},
    {SetPsFlg, ScanOf::PS, kFlagFields, kSetFlags, kScan},
    {SetSnFlg, ScanOf::SN, kFlagFields, kSetFlags, kScan},
    {SetConfFlag, ScanOf::None, ":uid @set @clear -", kSetChanged, kAgent},

    {SetAllMscf, ScanOf::MS, kAllMainFields, kSetMain, kAllScans},
    {SetAllRtcf, ScanOf::RT, kAllMainFields, kSetMain, kAllScans},
    {SetAllPscf, ScanOf::PS, kAllScheduledFields, kSetScheduled, kAllScans},
    {SetAllSncf, ScanOf::SN, kAllMainFields, kSetMain, kAllScans},
    {SetSpywareAllMscf, ScanOf::MS, kAllSpywareFields, kSetSpyware, kAllScans},
    {SetSpywareAllRtcf, ScanOf::RT, kAllRealTimeSpywareFields, kSetRealTimeSpyware, kAllScans},
    {SetSpywareAllPscf, ScanOf::PS, kAllSpywareFields, kSetSpyware, kAllScans},
    {SetSpywareAllSncf, ScanOf::SN, kAllSpywareFields, kSetSpyware, kAllScans},
    {SetAllExcList, ScanOf::ExclusionBit, "bit :folder :file :ext", kSetExclusions, kAllScans},
    {SetAllMsFlg, ScanOf::MS, kAllFlagFields, kSetFlags, kAllScans},
    {SetAllRtFlg, ScanOf::RT, kAllFlagFields, kSetFlags, kAllScans},
    {SetAllPsFlg, ScanOf::PS, kAllFlagFields, kSetFlags, kAllScans},
    {SetAllSnFlg, ScanOf::SN, kAllFlagFields, kSetFlags, kAllScans},
    {SetAllConfFlg, ScanOf::None, "@set @clear", kSetChanged, kNone},

    {SetStatus, ScanOf::None, ":uid @word1 @word2 -", "UPDATE agent SET status1 = @word1, status2 = @word2", kAgent},
    {SetPrivilege, ScanOf::None, ":uid @value1 @mask1 @value2 @mask2", kSetPrivilege, kAgent},
    {SetCfwActId, ScanOf::None, ":uid :policy", "UPDATE agent SET firewall_policy = :policy", kAgent},
    {SetCfwLogCount, ScanOf::None, ":uid $number @c1 @c2 @c3 @c4 @c5 @c6 $time", kSetFirewallCounts, kAgent},
    {SetSpecialLog, ScanOf::None, ":uid @kind :text", kAddSpecialLog, kAgent},
    {AddAudit, ScanOf::None, ":user :target :setting :old :new", kAddAudit, kNone},
};

}  // namespace

std::span<const TextCommandRow> TextCommandRows() {
    return kRows;
}

}  // namespace wrb
