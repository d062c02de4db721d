// The command table against a list that was written down apart from it.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "ScanGroup.h"

namespace {

struct tagRow {
    std::string_view name;
    std::string_view handler;
    std::string_view role;
    std::string_view fields;
    bool answers;
};

constexpr tagRow kTable[] = {
#define WRB_COMMAND(name, handler, role, fields, answers) {#name, #handler, role, fields, answers},
#include "CommandTable.inc"
#undef WRB_COMMAND
};

// What agents send, behind "CMDHL_", with a star where there is a handler. Readers of the counters count on the order.
constexpr char kExpected[] =
    "SLEEP* ECHO* CLEAR_INI_CACHE* GET_ALL_SCAN_CFG* GET_WTP_SETTING* GET_MS_CFG* GET_MS_CFG_EX* GET_SPY_MS_CFG* "
    "GET_RT_CFG* GET_RT_CFG_EX* GET_SPY_RT_CFG* GET_PS_CFG* GET_PS_CFG_EX* GET_SPY_PS_CFG* GET_SN_CFG* "
    "GET_SN_CFG_EX* GET_SPY_SN_CFG* GET_SPY_RESTORE_LIST* SET_MS_CFG* SET_MS_CFG_EX* SET_RT_CFG* SET_RT_CFG_EX* "
    "SET_PS_CFG* SET_PS_CFG_EX* SET_SN_CFG* SET_SN_CFG_EX* SET_SPY_MS_CFG* SET_SPY_RT_CFG* SET_SPY_PS_CFG* "
    "SET_SPY_SN_CFG* SET_ALL_CFG_EX* SET_MAILSCAN_RT_CFG* SET_CLIENTCFG_SU_STATUS* SET_CLIENTCFG_WARNING_SETTING* "
    "GET_INI_GLOBALSETTING GET_INI_OTHERUPDATESRC GET_INI_SCANSERVICELIST GET_INI_SERVICEMODEL GET_INI_CRITICAL "
    "GET_INI_COMPONENT_VER GET_CLN_NET_QUARANTINE_CMD GET_NCIE_SETTING* GET_SAMPLE_SUBMISSION_SETTING* "
    "GET_SABLEX_SETTING* GET_OPPSETTING GET_OPPSTATUS IS_CONFIGFLAGSET CMDHL_GET_CLN_ALERT_MSG* GET_IP_BY_UID "
    "PFW_SET_POLICY_ID PFW_GET_CLIENT_DOMAIN PFW_GET_CLIENT_FULL_DOMAIN PFW_UPDATE_CFW_COUNT* "
    "PFW_GET_LOG_QUERY_CONDITION* PFW_SET_LOG* SET_SPYWARE_RESTORE_LOG* SET_SPYWARELOG* SET_SPYWARE_BACKUP_MANIFEST* "
    "GET_SERVER_NAME SET_STATFLAG* GET_PRODUCT_INFO ADD_WTC_LOG* GET_INI_WHITELIST GET_INI_VEXORSETTING "
    "GET_INI_LOCALSCANSETTING GET_INI_SERVICESWITCHSETTING GET_CLIENT_ALL_SETTING SERVER_AUTH_SET_LOG "
    "GET_FA_RESTORE_SETTING* GET_SCAN_METHOD GET_SERVER_POLICY GET_CFG_PERMISSION ";

TEST(CommandTable, HasEveryCommandInItsPlace) {
    std::string names;
    for (const tagRow& row : kTable) {
        names.append(row.name.substr(6)).append(row.handler == "nullptr" ? " " : "* ");
        EXPECT_EQ(row.name.substr(0, 6), "CMDHL_");
        EXPECT_FALSE(row.role.empty()) << row.name;
        EXPECT_EQ(row.handler == "nullptr", row.fields == "-") << row.name;
        EXPECT_EQ(row.answers, row.fields.starts_with("reply pipe")) << row.name;
    }
    EXPECT_EQ(names, kExpected);
}

TEST(CommandTable, AnUpdateNamesTheFieldsOfItsGroup) {
    for (const wrb::ScanGroup& group : wrb::kScanGroups) {
        std::string fields = "uid";
        for (const wrb::ScanRow* const row : group.updateRows) {
            fields.append(", ").append(row->key.begin(), row->key.end());
        }
        const std::string handler = "cmdhl_Set" + std::string(group.name.begin(), group.name.end());
        const auto* const found = std::ranges::find(kTable, handler, &tagRow::handler);
        ASSERT_NE(found, std::end(kTable)) << handler;
        EXPECT_EQ(found->fields, fields) << handler;
    }
}

}  // namespace
