#include "TextCommands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "ScanTable.h"
#include "Store.h"
#include "TempFolder.h"

namespace wrb {
namespace {

constexpr wchar_t kUid[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
constexpr wchar_t kOther[] = L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42";

struct CTextCommandsTest : testing::Test {
    CTextCommandsTest() : db(CreateStore((folder / L"agents.db").wstring())) {
        for (const wchar_t* uid : {kUid, kOther}) {
            db->Use("INSERT INTO agent (uid) VALUES (:uid)").Bind(":uid", uid).Run();
        }
        for (const ScanType type : kScanTypes) {
            InsertScan(*db, kUid, type, DefaultScan(type));
        }
    }
    int64_t Write(DbCommand command, const std::wstring& fields) {
        CCmdProtocol request(fields.c_str());
        return RunTextCommand(*db, command, request);
    }
    std::optional<std::wstring> Read(DbCommand command, const std::wstring& fields) {
        CCmdProtocol request(fields.c_str());
        return AnswerTextCommand(*db, command, request);
    }
    test::CTempFolder folder;
    std::unique_ptr<CSqliteDb> db;
};

TEST_F(CTextCommandsTest, EveryTextCommandHasARowThatTakesItsFieldsAndRuns) {
    for (const tagDbCommand& command : kDbCommands) {
        SCOPED_TRACE(testing::PrintToString(command.name));
        const std::string_view names = command.requestFields;
        const auto commas = static_cast<std::size_t>(std::ranges::count(names, ','));
        const auto fields = TextCommandFields(command.id);
        ASSERT_EQ(fields.has_value(), command.answer != DbAnswer::Message);
        EXPECT_EQ(fields.value_or(1), names.empty() ? 0 : commas + 1);
        if (command.answer == DbAnswer::None) {
            EXPECT_NO_THROW(Write(command.id, L""));
        } else if (fields) {
            EXPECT_NO_THROW(Read(command.id, L""));
        }
    }
}

TEST_F(CTextCommandsTest, AMaskSaysWhichBitsAValueReplaces) {
    const struct {
        uint32_t stored;
        uint32_t result;
        const wchar_t* value;
        const wchar_t* mask;
    } kCases[] = {
        {0x0000000F, 0x000000F0, L"240", L"255"},
        {0xFFFFFFFF, 0x00010002, L"0", L"4294901757"},  // all but AllowCfg and the exclusion switch
        {0x00010002, 0xFFFFFFFF, L"4294967295", L"4294901757"},
        {0x12345678, 0x12345678, L"-1", L"0"},
        {0x00000000, 0x80000000, L"-1", L"-2147483648"},
        {0x000000FF, 0x000000F0, L"text", L"15"},
        {0x000000FF, 0x000000FF, L"", L""},
        {0x00000000, 0x00000007, L" +7x", L"99999999999999999999"},
    };
    for (const auto& [stored, result, value, mask] : kCases) {
        db->Use("UPDATE scan SET flags = @f, spyware_flags = @f, ole_layer = 4294967295").Bind("@f", stored).Run();
        EXPECT_EQ(Write(DbCommand::SetMsFlg, std::wstring(kUid) + L"\t" + value + L"\t" + mask), 1);
        const std::wstring shown = std::to_wstring(static_cast<int32_t>(result)) + L"\t20\t-1\t4";
        EXPECT_EQ(Read(DbCommand::GetMscf, std::wstring(kUid) + L"\t0"), shown);
        EXPECT_EQ(db->NumberOf("SELECT sum(flags) + sum(spyware_flags) FROM scan"), result + int64_t{stored} * 7);
    }
}

TEST_F(CTextCommandsTest, ConfigurationBitsChooseTheGroup) {
    const struct {
        const wchar_t* bit;
        std::optional<std::wstring> answer;
    } kCases[] = {
        {L"1", L"ms\t\\m\t\t\ta"}, {L"1024", L"sn\t\\m\t\t\ta"}, {L"256", L"f-ms\tf\te"},
        {L"65536", L"f-sn\tf\te"}, {L"0", std::nullopt},         {L"3", std::nullopt},
        {L"-1", std::nullopt},     {L"", std::nullopt},          {L"4294967297", std::nullopt},
    };
    db->Execute(
        "UPDATE scan SET ext_list = substr('msrtpssn', type * 2 + 1, 2), move_dir = '\\m', cust_action = 'a', "
        "excluded_folder = 'f-' || substr('msrtpssn', type * 2 + 1, 2), excluded_file = 'f', excluded_ext = 'e'");
    for (const auto& [bit, answer] : kCases) {
        EXPECT_EQ(Read(DbCommand::GetExtra, std::wstring(kUid) + L"\t" + bit), answer)
            << testing::PrintToString(std::wstring(bit));
    }
    EXPECT_EQ(Write(DbCommand::SetExcludeList, std::wstring(kUid) + L"\t1\tx\ty\tz"), 0);  // a main group's bit
}

TEST_F(CTextCommandsTest, SpecialLogsHaveAnEnd) {
    db->Execute(
        "INSERT INTO special_log (id, uid, log_type, text, received) "
        "SELECT value, '3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3', 1, 'old', 0 FROM (SELECT 1 value UNION SELECT 10000)");
    EXPECT_EQ(Write(DbCommand::SetSpecialLog, std::wstring(kUid) + L"\t7\ttext"), 1);
    EXPECT_EQ(db->NumberOf("SELECT sum(id) FROM special_log"), 10000 + 10001) << "the first has gone";
    EXPECT_EQ(db->NumberOf("SELECT count(*) FROM special_log WHERE log_type = 7 AND received > 1600000000"), 1);
}

}  // namespace
}  // namespace wrb
