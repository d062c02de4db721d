// What every function of the library puts on the pipe, against a database server that records it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "DbAgent.h"
#include "DbAllScan.h"
#include "DbApiHeader.h"
#include "DbCommands.h"
#include "DbFirewall.h"
#include "DbScanCfg.h"
#include "DbScanUpdate.h"
#include "DbTransport.h"
#include "DbVexor.h"
#include "FakeDbService.h"

namespace {

using wrb::test::CFakeDbService;
using wrb::test::tagDbRequest;

constexpr const wchar_t* kUid = L"8b3dbf4c-2a6c-4f0a-9d36-0d8a3c1f7e55";

tagScanGroupValues Values() {
    tagScanGroupValues values{1,  2,      3,       0xFFFFFFFF,    5,      6,         7,       8,   9,     10, 11,
                              12, L"ext", L"move", L"not stored", L"act", L"folder", L"file", L"", L"spy"};
    return values;
}

const tagScanUpdate kUpdate{0x80000001, 0xFFFEFFFD, 1};

struct tagCase {
    DbCommand command;
    std::function<bool()> call;
    std::wstring fields;  // behind the reply id, blanks for TABs
};

uint32_t g_number;
std::wstring g_text;
tagScanGroupValues g_values;
tagDbPrivilege g_privilege;
std::vector<std::wstring> g_items;

const std::wstring kUidText(kUid);
const std::wstring kMain = L"2147483649 4294901757 2 3 4294967295";
const std::wstring kMainTexts = L"ext move act 1";

const tagCase kReads[] = {
    {DbCommand::GetStatus, [] { return dbGetStatusW(kUid, g_number, 1); }, kUidText + L" 1"},
    {DbCommand::GetArchitecture, [] { return dbGetArchitectureW(kUid, g_number); }, kUidText + L" 0"},
    {DbCommand::GetConfFlag, [] { return dbGetConfFlagW(kUid, g_number); }, kUidText + L" 0"},
    {DbCommand::GetClientPlat, [] { return dbGetClientPlatW(kUid, g_number, 4294967295); }, kUidText + L" 4294967295"},
    {DbCommand::GetClnDomainNameAndUid, [] { return dbGetClnDomainNameAndUidW(kUid, g_text); }, kUidText + L" 0"},
    {DbCommand::GetClnFullDomainNameAndUid, [] { return dbGetClnFullDomainNameAndUidW(kUid, g_text); },
     kUidText + L" 0"},
    {DbCommand::GetComputername, [] { return dbGetComputerNameW(kUid, g_text); }, kUidText + L" 0"},
    {DbCommand::GetIp, [] { return dbGetIpW(kUid, g_text); }, kUidText + L" 0"},
    {DbCommand::GetProgVer, [] { return dbGetProgVerW(nullptr, g_text); }, L" 0"},
    {DbCommand::GetVexorBmCfg, [] { return dbGetVexorBmCfgW(kUid, g_text); }, kUidText + L" 0"},
    {DbCommand::GetClientPassword, [] { return dbGetClientPasswordW(kUidText + L"\t1", g_text); }, kUidText + L" 1"},
    {DbCommand::GetServiceSwitch, [] { return dbGetServiceSwitchW(L"", g_text); }, L"-"},
    {DbCommand::GetIcrcDestScanType, [] { return dbGetIcrcDestScanTypeW(kUidText, g_text); }, kUidText},
    {DbCommand::IsClientExisted, [] { return dbIsClientExistedW(kUidText, g_text); }, kUidText},
    {DbCommand::GetMscf, [] { return dbGetMscfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetRtcf, [] { return dbGetRtcfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetPscf, [] { return dbGetPscfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSncf, [] { return dbGetSncfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSpywareMscf, [] { return dbGetSpywareMscfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSpywareRtcf, [] { return dbGetSpywareRtcfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSpywarePscf, [] { return dbGetSpywarePscfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSpywareSncf, [] { return dbGetSpywareSncfW(kUid, g_values); }, kUidText + L" 0"},
    {DbCommand::GetSpywareWhiteList, [] { return dbGetSpywareWhiteListW(kUid, g_items); }, kUidText + L" 0"},
    {DbCommand::GetBackupLogAllSessions, [] { return dbGetBackupLogAllSessionsW(kUid, g_text); }, kUidText + L" 0"},
    {DbCommand::GetExtra, [] { return dbGetExtraW(kUid, 0x10000, g_text); }, kUidText + L" 65536"},
    {DbCommand::GetOppStatus, [] { return dbGetOppStatusW(kUid, g_number, g_number); }, kUidText + L" 0"},
    {DbCommand::GetPrivilege, [] { return dbGetPrivilegeW(kUid, g_privilege); }, kUidText + L" 0"},
};

const tagCase kWrites[] = {
    {DbCommand::SetMscf, [] { return dbSetMscfW(kUid, kUpdate, Values()); },
     kUidText + L" " + kMain + L" " + kMainTexts},
    {DbCommand::SetRtcf, [] { return dbSetRtcfW(kUid, kUpdate, Values()); },
     kUidText + L" " + kMain + L" " + kMainTexts},
    {DbCommand::SetPscf, [] { return dbSetPscfW(kUid, kUpdate, Values()); },
     kUidText + L" " + kMain + L" 5 6 7 8 9 10 11 12 " + kMainTexts},
    {DbCommand::SetSncf, [] { return dbSetSncfW(kUid, kUpdate, Values()); },
     kUidText + L" " + kMain + L" " + kMainTexts},
    {DbCommand::SetAllMscf, [] { return dbSetAllMscfW(kUpdate, Values()); }, kMain + L" " + kMainTexts},
    {DbCommand::SetAllRtcf, [] { return dbSetAllRtcfW(kUpdate, Values()); }, kMain + L" " + kMainTexts},
    {DbCommand::SetAllPscf, [] { return dbSetAllPscfW(kUpdate, Values()); },
     kMain + L" 5 6 7 8 9 10 11 12 " + kMainTexts},
    {DbCommand::SetAllSncf, [] { return dbSetAllSncfW(kUpdate, Values()); }, kMain + L" " + kMainTexts},
    {DbCommand::SetSpywareMscf, [] { return dbSetSpywareMscfW(kUid, kUpdate, Values()); },
     kUidText + L" 2147483649 4294901757 spy 1"},
    {DbCommand::SetSpywareRtcf, [] { return dbSetSpywareRtcfW(kUid, kUpdate, Values()); },
     kUidText + L" 2147483649 4294901757 1"},
    {DbCommand::SetSpywarePscf, [] { return dbSetSpywarePscfW(kUid, kUpdate, Values()); },
     kUidText + L" 2147483649 4294901757 spy 1"},
    {DbCommand::SetSpywareSncf, [] { return dbSetSpywareSncfW(kUid, kUpdate, Values()); },
     kUidText + L" 2147483649 4294901757 spy 1"},
    {DbCommand::SetSpywareAllMscf, [] { return dbSetSpywareAllMscfW(kUpdate, Values()); },
     L"2147483649 4294901757 spy 1"},
    {DbCommand::SetSpywareAllRtcf, [] { return dbSetSpywareAllRtcfW(kUpdate, Values()); }, L"2147483649 4294901757 1"},
    {DbCommand::SetSpywareAllPscf, [] { return dbSetSpywareAllPscfW(kUpdate, Values()); },
     L"2147483649 4294901757 spy 1"},
    {DbCommand::SetSpywareAllSncf, [] { return dbSetSpywareAllSncfW(kUpdate, Values()); },
     L"2147483649 4294901757 spy 1"},
    {DbCommand::SetExcludeList, [] { return dbSetExcludeListW(kUid, 0x4000, Values()); },
     kUidText + L" 16384 folder file "},
    {DbCommand::SetAllExcList, [] { return dbSetAllExcListW(0x100, Values()); }, L"256 folder file "},
    {DbCommand::SetMsFlg, [] { return dbSetMsFlgW(kUid, 65536, 65537); }, kUidText + L" 65536 65537"},
    {DbCommand::SetRtFlg, [] { return dbSetRtFlgW(kUid, 65536, 65537); }, kUidText + L" 65536 65537"},
    {DbCommand::SetPsFlg, [] { return dbSetPsFlgW(kUid, 65536, 65537); }, kUidText + L" 65536 65537"},
    {DbCommand::SetSnFlg, [] { return dbSetSnFlgW(kUid, 65536, 65537); }, kUidText + L" 65536 65537"},
    {DbCommand::SetAllMsFlg, [] { return dbSetAllMsFlgW(65536, 65537); }, L"65536 65537"},
    {DbCommand::SetAllRtFlg, [] { return dbSetAllRtFlgW(65536, 65537); }, L"65536 65537"},
    {DbCommand::SetAllPsFlg, [] { return dbSetAllPsFlgW(65536, 65537); }, L"65536 65537"},
    {DbCommand::SetAllSnFlg, [] { return dbSetAllSnFlgW(65536, 65537); }, L"65536 65537"},
    {DbCommand::SetConfFlag, [] { return dbSetConfFlagW(kUid, 0, 0x1C507); }, kUidText + L" 0 115975 0"},
    {DbCommand::SetAllConfFlg, [] { return dbSetAllConfFlgW(1, 2); }, L"1 2"},
    {DbCommand::SetStatus, [] { return dbSetStatusW(kUid, 3, 0xFFFFFFFF); }, kUidText + L" 3 4294967295 0"},
    {DbCommand::SetPrivilege,
     [] {
         return dbSetPrivilegeW(kUid, {1, 2}, {3, 4});
     },
     kUidText + L" 1 3 2 4"},
    {DbCommand::SetCfwActId, [] { return dbSetCfwActIdW(kUid, L"policy"); }, kUidText + L" policy"},
    {DbCommand::SetCfwLogCount,
     [] {
         return dbSetCfwLogCountW(kUid, -7, {1, 2, 3, 4, 5, 4294967295}, L"");
     },
     kUidText + L" -7 1 2 3 4 5 4294967295 0"},
    {DbCommand::SetSpecialLog, [] { return dbSetSpecialLogW(kUid, 9, L"text"); }, kUidText + L" 9 text"},
};

std::vector<std::wstring> Split(const std::wstring& fields) {
    std::vector<std::wstring> split;
    for (std::size_t start = 0; start <= fields.size() && fields != L"-";) {
        const std::size_t end = std::min(fields.find(L' ', start), fields.size());
        split.push_back(fields.substr(start, end - start));
        start = end + 1;
    }
    return split;
}

// Runs the calls one by one and compares what arrived with the command and the fields of the table; the reply id is
// checked by `checkId`. Adds the commands to `seen`.
template <typename CheckId>
void ExpectRequests(std::span<const tagCase> cases, const CFakeDbService& service, CheckId checkId,
                    std::set<DbCommand>& seen) {
    std::size_t count = 0;
    for (const tagCase& test : cases) {
        SCOPED_TRACE(testing::PrintToString(wrb::DbName(test.command)));
        EXPECT_TRUE(test.call());
        const std::vector<tagDbRequest> requests = service.WaitFor(++count);
        ASSERT_EQ(requests.size(), count);
        const tagDbRequest& request = requests.back();
        std::vector<std::wstring> fields = request.Fields();
        ASSERT_GE(fields.size(), 2u);
        EXPECT_EQ(fields[0], wrb::DbName(test.command));
        checkId(fields[1]);
        EXPECT_EQ(std::vector(fields.begin() + 2, fields.end()), Split(test.fields));
        EXPECT_EQ(request.request.substr(request.request.size() - 2), std::string(2, '\0')) << "no terminator";
        seen.insert(test.command);
    }
}

TEST(DbRequests, EveryTextCommandSendsItsFields) {
    std::set<DbCommand> seen;
    {
        const CFakeDbService service([](const tagDbRequest&) { return wrb::test::WideBytes(L"1\t2"); });
        ExpectRequests(
            kReads, service, [](const std::wstring& id) { EXPECT_NE(id, L"-1"); }, seen);
    }
    const CFakeDbService service;
    ExpectRequests(
        kWrites, service, [](const std::wstring& id) { EXPECT_EQ(id, L"-1"); }, seen);
    for (const tagDbCommand& command : kDbCommands) {
        EXPECT_EQ(seen.contains(command.id), command.answer != DbAnswer::Message) << command.requestFields;
    }
}

// Each command's fields are as many as its row names.
TEST(DbRequests, TheTableOfCommandsCountsTheSameFields) {
    for (const auto& cases : {std::span<const tagCase>(kReads), std::span<const tagCase>(kWrites)}) {
        for (const tagCase& test : cases) {
            const std::string_view named = wrb::DescribeDbCommand(test.command).requestFields;
            std::size_t count = named.empty() ? 0 : 1;
            for (std::size_t comma = 0; (comma = named.find(", ", comma)) != std::string_view::npos; ++comma) {
                ++count;
            }
            EXPECT_EQ(Split(test.fields).size(), count) << named;
        }
    }
}

TEST(DbRequests, AFrameStandsInFrontOfEveryRequest) {
    const CFakeDbService service([](const tagDbRequest&) { return std::string(); });
    std::wstring text;
    tagClnAllScanCfg cfg;
    dbGetIpW(kUid, text);
    dbSetConfFlagW(kUid, 1, 0);
    dbGetClnAllScanCfgW(kUid, cfg, L"cmdhm_GetAllScanCfg");
    const wchar_t* const callers[] = {L"", L"", L"cmdhm_GetAllScanCfg"};
    const auto requests = service.WaitFor(3);
    ASSERT_EQ(requests.size(), 3u);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i].all.substr(0, 4), "\x03\x07\x1A\x0E");
        std::span bytes(reinterpret_cast<const uint8_t*>(requests[i].all.data()), requests[i].all.size());
        CDbApiHeaderContent content;
        ASSERT_EQ(wrb::ReadDbApiHeader(bytes, content), wrb::DbApiHeaderStatus::Ok);
        EXPECT_EQ(content.caller, callers[i]);
        EXPECT_EQ(bytes.size(), requests[i].request.size());
    }
}

TEST(DbRequests, SerializedCommandsCarryTheUidInThirtySixCharacters) {
    const CFakeDbService service([](const tagDbRequest&) { return std::string(); });
    tagClnAllScanCfg cfg;
    tagClnAllScanCfgEx lists;
    tagVEXORCustomBmCfg bm;
    dbGetClnAllScanCfgW((kUidText + L"beyond").c_str(), cfg, L"a");
    dbGetClnAllScanExW(nullptr, lists, L"b");
    dbGetVexorCustomBmCfgW(kUid, bm);
    const struct {
        DbCommand command;
        std::wstring uid;
    } expected[] = {{DbCommand::ClientGetAllScanCfg, kUidText},
                    {DbCommand::ClientGetAllScanEx, L""},
                    {DbCommand::GetVexorCustomBmCfg, kUidText}};
    const auto requests = service.WaitFor(3);
    ASSERT_EQ(requests.size(), 3u);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_TRUE(requests[i].IsMessage());
        EXPECT_THAT(requests[i].Texts(),
                    testing::ElementsAre(wrb::DbName(expected[i].command),
                                         testing::StartsWith(L"0105" + requests[i].Name()), expected[i].uid));
    }
}

TEST(DbRequests, ReplyIdJoinsThreadAndTick) {
    EXPECT_EQ(wrb::MakeDbReplyId(0x00012345, 0x000A6789), 0x23456789);
    EXPECT_EQ(wrb::MakeDbReplyId(0x8001, 0xFFFFFFFF), static_cast<int32_t>(0x8001FFFF));
    EXPECT_LT(wrb::MakeDbReplyId(0x8001, 0), 0);
}

TEST(DbRequests, AnEmptyUidHasNoStatus) {
    const CFakeDbService service;
    uint32_t status = 5;
    EXPECT_FALSE(dbGetStatusW(L"", status));
    EXPECT_FALSE(dbGetStatusW(nullptr, status));
    EXPECT_EQ(status, 5u);
    EXPECT_TRUE(dbSetConfFlagW(kUid, 0, 0));
    EXPECT_EQ(service.WaitFor(1).size(), 1u) << "only the write";
}

TEST(DbRequests, OnlyAnExclusionGroupHasAnExclusionList) {
    EXPECT_FALSE(dbSetExcludeListW(kUid, 0x1, Values()));
    EXPECT_FALSE(dbSetAllExcListW(0, Values()));
}

TEST(DbRequests, SpecialLogComesInAnyCodePage) {
    const CFakeDbService service;
    EXPECT_TRUE(dbSetSpecialLogA(kUid, 1, "\xC3\x9C", 65001));
    EXPECT_TRUE(dbSetSpecialLogA(kUid, 1, "\xDC", 1252));
    EXPECT_TRUE(dbSetSpecialLogA(kUid, 1, nullptr, 1252));
    EXPECT_FALSE(dbSetSpecialLogA(kUid, 1, "x", 99999));
    const auto requests = service.WaitFor(3);
    ASSERT_EQ(requests.size(), 3u);
    const wchar_t* const texts[] = {L"\u00DC", L"\u00DC", L""};
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i].Fields().back(), texts[i]);
    }
}

}  // namespace
