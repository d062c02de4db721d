// Dispatch of one message, on a command map of the test's own; and the command table against a list that was written
// down apart from it.
#include "CommandMap.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "CmdProtocol.h"
#include "GuardedBytes.h"
#include "ScanGroup.h"

namespace {

std::wstring g_called;  // handler, and the field after the name

void First(CCmdProtocol& message) {
    std::wstring field;
    message >> field;
    g_called += L"first:" + field;
}

void Second(CCmdProtocol&) {
    g_called += L"second";
}

// Dispatches a copy of the text that ends where readable memory ends. Returns what was called, and checks that the
// result tells whether something was.
std::wstring Dispatch(const std::wstring& text, std::size_t readable, uint64_t bytes) {
    constexpr wrb::CommandRow kRows[] = {{L"CMDHL_ONE", First},
                                         {L"CMDHL_ONE", Second},
                                         {L"CMDHL_N", nullptr},
                                         {L"CMDHL_N", Second},
                                         {L"CMDHL_X", Second}};
    wrb::CommandMap map;
    wrb::AddCommands(map, kRows);
    wrb::AddCommands(map, kRows);                                                 // a second start adds nothing
    const wrb::test::GuardedBytes message(text.data(), readable + readable % 2);  // characters have even addresses
    g_called.clear();
    const unsigned result = wrb::DispatchCommand(map, reinterpret_cast<const wchar_t*>(message.Start()), bytes);
    EXPECT_EQ(result, g_called.empty() ? 0u : 1u);
    return g_called;
}

TEST(CommandMap, MessagesByTheirSizeAndNamesToTheLetter) {
    const struct {
        std::wstring text;
        uint64_t bytes;
        const wchar_t* called;
    } kCases[] = {
        {L"CMDHL_ONE", 18, L"first:"},
        {L"CMDHL_ONE\tpipe\trest", 38, L"first:pipe"},
        {L"CMDHL_ONEZ", 19, L"first:"},  // an odd last byte is dropped
        {L"CMDHL_XY", 15, L"second"},    // the least size: seven characters
        {L"CMDHL_X", 14, L""},           // refused whatever it says
        {L"CMDHL_ONE", 0, L""},
        {L"cmdhl_ONE", 18, L""},
        {L"CMDHL_ONE ", 20, L""},
        {L"CMDHL_\tONE", 20, L""},
        {L"CMDHL_N\tx", 18, L""},                        // known, not built; its second row changes nothing
        {std::wstring(L"CMDHL_ONE\0\tx", 12), 24, L""},  // a NUL belongs to the name
        {L"CMDHL_ONE\tfield", 0xFFFFFFFF, L"first:field"},
        {L"CMDHL_ONE\tfield", 0xABCDFFFFFFFF, L"first:field"},
        {L"CMDHL_ONE\tfield", 0x100000012, L"first:"},  // the low half counts: 18 bytes
        {L"CMDHL_ONE\tfield", 0x100000000, L""},
        {L"CMDHL_ONE\tfield", 0x80000000, L""},
        {L"CMDHL_ONE\tfield", 0xFFFFFFFE, L""},
        {L"CMD", 0xFFFFFFFF, L""},
    };
    for (const auto& row : kCases) {
        // Sizes that are no sizes are about a terminated text.
        const auto readable = row.bytes < 100 ? row.bytes : (row.text.size() + 1) * sizeof(wchar_t);
        EXPECT_EQ(Dispatch(row.text, readable, row.bytes), row.called) << row.bytes;
    }
    EXPECT_EQ(wrb::DispatchCommand({}, nullptr, 18), 0u);
}

struct Row {
    std::string_view name;
    std::string_view handler;
    std::string_view role;
    std::string_view fields;
    bool answers;
};

constexpr Row kTable[] = {
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
    for (const Row& row : kTable) {
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
        const auto* const found = std::ranges::find(kTable, handler, &Row::handler);
        ASSERT_NE(found, std::end(kTable)) << handler;
        EXPECT_EQ(found->fields, fields) << handler;
    }
}

}  // namespace
