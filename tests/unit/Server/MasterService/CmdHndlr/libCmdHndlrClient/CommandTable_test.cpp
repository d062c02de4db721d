// The command table against a list that was written down apart from it.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "CommandSlot.h"
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

// What agents send, behind "CMDHL_"; readers of the counters count on the order.
constexpr std::string_view kExpected[] = {
    // clang-format off
    "SLEEP", "ECHO", "CLEAR_INI_CACHE", "GET_ALL_SCAN_CFG", "GET_WTP_SETTING", "GET_MS_CFG", "GET_MS_CFG_EX",
    "GET_SPY_MS_CFG", "GET_RT_CFG", "GET_RT_CFG_EX", "GET_SPY_RT_CFG", "GET_PS_CFG", "GET_PS_CFG_EX",
    "GET_SPY_PS_CFG", "GET_SN_CFG", "GET_SN_CFG_EX", "GET_SPY_SN_CFG", "GET_SPY_RESTORE_LIST", "SET_MS_CFG",
    "SET_MS_CFG_EX", "SET_RT_CFG", "SET_RT_CFG_EX", "SET_PS_CFG", "SET_PS_CFG_EX", "SET_SN_CFG", "SET_SN_CFG_EX",
    "SET_SPY_MS_CFG", "SET_SPY_RT_CFG", "SET_SPY_PS_CFG", "SET_SPY_SN_CFG", "SET_ALL_CFG_EX", "SET_MAILSCAN_RT_CFG",
    "SET_CLIENTCFG_SU_STATUS", "SET_CLIENTCFG_WARNING_SETTING", "GET_INI_GLOBALSETTING", "GET_INI_OTHERUPDATESRC",
    "GET_INI_SCANSERVICELIST", "GET_INI_SERVICEMODEL", "GET_INI_CRITICAL", "GET_INI_COMPONENT_VER",
    "GET_CLN_NET_QUARANTINE_CMD", "GET_NCIE_SETTING", "GET_SAMPLE_SUBMISSION_SETTING", "GET_SABLEX_SETTING",
    "GET_OPPSETTING", "GET_OPPSTATUS", "IS_CONFIGFLAGSET", "CMDHL_GET_CLN_ALERT_MSG", "GET_IP_BY_UID",
    "PFW_SET_POLICY_ID", "PFW_GET_CLIENT_DOMAIN", "PFW_GET_CLIENT_FULL_DOMAIN", "PFW_UPDATE_CFW_COUNT",
    "PFW_GET_LOG_QUERY_CONDITION", "PFW_SET_LOG", "SET_SPYWARE_RESTORE_LOG", "SET_SPYWARELOG",
    "SET_SPYWARE_BACKUP_MANIFEST", "GET_SERVER_NAME", "SET_STATFLAG", "GET_PRODUCT_INFO", "ADD_WTC_LOG",
    "GET_INI_WHITELIST", "GET_INI_VEXORSETTING", "GET_INI_LOCALSCANSETTING", "GET_INI_SERVICESWITCHSETTING",
    "GET_CLIENT_ALL_SETTING", "SERVER_AUTH_SET_LOG", "GET_FA_RESTORE_SETTING", "GET_SCAN_METHOD", "GET_SERVER_POLICY",
    "GET_CFG_PERMISSION",
    // clang-format on
};

bool IsBuilt(std::size_t row) {
    return row <= 33 || (row >= 41 && row <= 43) || row == 47 || (row >= 52 && row <= 57) || row == 59 || row == 61 ||
           row == 68;
}

TEST(CommandTable, HasEveryCommandInItsPlace) {
    ASSERT_EQ(std::size(kTable), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kTable); ++i) {
        const tagRow& row = kTable[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.name, "CMDHL_" + std::string(kExpected[i]));
        EXPECT_EQ(row.handler != "nullptr", IsBuilt(i));
        EXPECT_EQ(row.fields != "-", IsBuilt(i));
        EXPECT_FALSE(row.role.empty());
        EXPECT_EQ(row.answers, row.fields.starts_with("reply pipe"));
    }
    EXPECT_EQ(static_cast<std::size_t>(wrb::CommandSlot::CMDHL_GET_CFG_PERMISSION), std::size(kTable) - 1);
}

TEST(CommandTable, AnUpdateNamesTheFieldsOfItsGroup) {
    constexpr std::string_view kTypes[] = {"MS", "RT", "PS", "SN"};
    for (const wrb::ScanGroup& group : wrb::kScanGroups) {
        const std::string type(kTypes[static_cast<std::size_t>(group.type)]);
        const std::string name = "CMDHL_SET_" + std::string(group.kind == wrb::ScanGroupKind::Spyware ? "SPY_" : "") +
                                 type + "_CFG" + (group.kind == wrb::ScanGroupKind::Exclusion ? "_EX" : "");
        std::string fields = "uid";
        for (const wrb::ScanRow* const row : group.updateRows) {
            fields.append(", ").append(row->key.begin(), row->key.end());
        }
        const auto* const found = std::ranges::find(kTable, std::string_view(name), &tagRow::name);
        ASSERT_NE(found, std::end(kTable)) << name;
        EXPECT_EQ(found->fields, fields) << name;
    }
}

}  // namespace
