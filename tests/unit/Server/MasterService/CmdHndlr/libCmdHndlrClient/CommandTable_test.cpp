// The command table against a list that was written down apart from it.
#include <gtest/gtest.h>

#include <string_view>

#include "CommandSlot.h"

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

// What agents send and readers of the counters count on.
constexpr struct {
    std::string_view name;
    bool built;
} kExpected[] = {
    // clang-format off
    {"CMDHL_SLEEP", true},
    {"CMDHL_ECHO", true},
    {"CMDHL_CLEAR_INI_CACHE", true},
    {"CMDHL_GET_ALL_SCAN_CFG", true},
    {"CMDHL_GET_WTP_SETTING", false},
    {"CMDHL_GET_MS_CFG", true},
    {"CMDHL_GET_MS_CFG_EX", true},
    {"CMDHL_GET_SPY_MS_CFG", true},
    {"CMDHL_GET_RT_CFG", true},
    {"CMDHL_GET_RT_CFG_EX", true},
    {"CMDHL_GET_SPY_RT_CFG", true},
    {"CMDHL_GET_PS_CFG", true},
    {"CMDHL_GET_PS_CFG_EX", true},
    {"CMDHL_GET_SPY_PS_CFG", true},
    {"CMDHL_GET_SN_CFG", true},
    {"CMDHL_GET_SN_CFG_EX", true},
    {"CMDHL_GET_SPY_SN_CFG", true},
    {"CMDHL_GET_SPY_RESTORE_LIST", true},
    {"CMDHL_SET_MS_CFG", false},
    {"CMDHL_SET_MS_CFG_EX", false},
    {"CMDHL_SET_RT_CFG", false},
    {"CMDHL_SET_RT_CFG_EX", false},
    {"CMDHL_SET_PS_CFG", false},
    {"CMDHL_SET_PS_CFG_EX", false},
    {"CMDHL_SET_SN_CFG", false},
    {"CMDHL_SET_SN_CFG_EX", false},
    {"CMDHL_SET_SPY_MS_CFG", false},
    {"CMDHL_SET_SPY_RT_CFG", false},
    {"CMDHL_SET_SPY_PS_CFG", false},
    {"CMDHL_SET_SPY_SN_CFG", false},
    {"CMDHL_SET_ALL_CFG_EX", false},
    {"CMDHL_SET_MAILSCAN_RT_CFG", false},
    {"CMDHL_SET_CLIENTCFG_SU_STATUS", false},
    {"CMDHL_SET_CLIENTCFG_WARNING_SETTING", false},
    {"CMDHL_GET_INI_GLOBALSETTING", false},
    {"CMDHL_GET_INI_OTHERUPDATESRC", false},
    {"CMDHL_GET_INI_SCANSERVICELIST", false},
    {"CMDHL_GET_INI_SERVICEMODEL", false},
    {"CMDHL_GET_INI_CRITICAL", false},
    {"CMDHL_GET_INI_COMPONENT_VER", false},
    {"CMDHL_GET_CLN_NET_QUARANTINE_CMD", false},
    {"CMDHL_GET_NCIE_SETTING", false},
    {"CMDHL_GET_SAMPLE_SUBMISSION_SETTING", false},
    {"CMDHL_GET_SABLEX_SETTING", false},
    {"CMDHL_GET_OPPSETTING", false},
    {"CMDHL_GET_OPPSTATUS", false},
    {"CMDHL_IS_CONFIGFLAGSET", false},
    {"CMDHL_CMDHL_GET_CLN_ALERT_MSG", false},
    {"CMDHL_GET_IP_BY_UID", false},
    {"CMDHL_PFW_SET_POLICY_ID", false},
    {"CMDHL_PFW_GET_CLIENT_DOMAIN", false},
    {"CMDHL_PFW_GET_CLIENT_FULL_DOMAIN", false},
    {"CMDHL_PFW_UPDATE_CFW_COUNT", false},
    {"CMDHL_PFW_GET_LOG_QUERY_CONDITION", false},
    {"CMDHL_PFW_SET_LOG", false},
    {"CMDHL_SET_SPYWARE_RESTORE_LOG", false},
    {"CMDHL_SET_SPYWARELOG", false},
    {"CMDHL_SET_SPYWARE_BACKUP_MANIFEST", false},
    {"CMDHL_GET_SERVER_NAME", false},
    {"CMDHL_SET_STATFLAG", false},
    {"CMDHL_GET_PRODUCT_INFO", false},
    {"CMDHL_ADD_WTC_LOG", false},
    {"CMDHL_GET_INI_WHITELIST", false},
    {"CMDHL_GET_INI_VEXORSETTING", false},
    {"CMDHL_GET_INI_LOCALSCANSETTING", false},
    {"CMDHL_GET_INI_SERVICESWITCHSETTING", false},
    {"CMDHL_GET_CLIENT_ALL_SETTING", false},
    {"CMDHL_SERVER_AUTH_SET_LOG", false},
    {"CMDHL_GET_FA_RESTORE_SETTING", false},
    {"CMDHL_GET_SCAN_METHOD", false},
    {"CMDHL_GET_SERVER_POLICY", false},
    {"CMDHL_GET_CFG_PERMISSION", false},
    // clang-format on
};

TEST(CommandTable, HasEveryCommandInItsPlace) {
    ASSERT_EQ(std::size(kTable), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kTable); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(kTable[i].name, kExpected[i].name);
        EXPECT_EQ(kTable[i].handler != "nullptr", kExpected[i].built);
    }
    EXPECT_EQ(static_cast<int>(wrb::CommandSlot::CMDHL_SLEEP), 0);
    EXPECT_EQ(static_cast<int>(wrb::CommandSlot::CMDHL_GET_SPY_SN_CFG), 16);
    EXPECT_EQ(static_cast<int>(wrb::CommandSlot::CMDHL_GET_CFG_PERMISSION), 71);
}

TEST(CommandTable, RowsTellAConsistentStory) {
    for (const tagRow& row : kTable) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(row.role.empty());
        EXPECT_EQ(row.handler == "nullptr", row.fields == "-");
        EXPECT_EQ(row.answers, row.fields.substr(0, 10) == "reply pipe");
    }
}

}  // namespace
