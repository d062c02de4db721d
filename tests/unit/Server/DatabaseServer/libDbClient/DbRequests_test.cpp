// What every function of the library puts on the pipe, against a database server that records it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
const std::wstring kUidText(kUid);

const tagScanUpdate kUpdate{0x80000001, 0xFFFEFFFD, 1};

tagScanGroupValues Values() {
    return {1,  2,      3,       0xFFFFFFFF,    5,      6,         7,       8,   9,     10, 11,
            12, L"ext", L"move", L"not stored", L"act", L"folder", L"file", L"", L"spy"};
}

// A call and the fields that it must send behind the reply id; a blank stands for a TAB, "-" for no field at all.
struct tagCase {
    DbCommand command;
    std::function<bool()> call;
    std::wstring fields;
};

// Rows of functions with the same parameters.
template <typename Out>
tagCase Read(DbCommand command, bool (*function)(const wchar_t*, Out&, uint32_t)) {
    const auto call = [=] {
        Out out{};
        return function(kUid, out, 4294967295);
    };
    return {command, call, kUidText + L" 4294967295"};
}
tagCase Prebuilt(DbCommand command, bool (*function)(const std::wstring&, std::wstring&), const std::wstring& fields) {
    std::wstring parameters = fields;
    std::ranges::replace(parameters, L' ', L'\t');
    const auto call = [=] {
        std::wstring text;
        return function(fields == L"-" ? L"" : parameters, text);
    };
    return {command, call, fields};
}
tagCase Set(DbCommand command, bool (*function)(const wchar_t*, const tagScanUpdate&, const tagScanGroupValues&),
            const wchar_t* fields) {
    return {command, [=] { return function(kUid, kUpdate, Values()); }, kUidText + L" " + fields};
}
tagCase SetAll(DbCommand command, bool (*function)(const tagScanUpdate&, const tagScanGroupValues&),
               const wchar_t* fields) {
    return {command, [=] { return function(kUpdate, Values()); }, fields};
}
tagCase SetFlag(DbCommand command, bool (*function)(const wchar_t*, uint32_t, uint32_t)) {
    return {command, [=] { return function(kUid, 65536, 65537); }, kUidText + L" 65536 65537"};
}
tagCase SetAllFlag(DbCommand command, bool (*function)(uint32_t, uint32_t)) {
    return {command, [=] { return function(65536, 65537); }, L"65536 65537"};
}

constexpr const wchar_t* kMain = L"2147483649 4294901757 2 3 4294967295 ext move act 1";
constexpr const wchar_t* kScheduled = L"2147483649 4294901757 2 3 4294967295 5 6 7 8 9 10 11 12 ext move act 1";
constexpr const wchar_t* kSpyware = L"2147483649 4294901757 spy 1";
constexpr const wchar_t* kSpywareRealTime = L"2147483649 4294901757 1";

bool GetExtra(const wchar_t* uid, std::wstring& text, uint32_t configBit) {
    return dbGetExtraW(uid, configBit, text);
}
bool GetOppStatus(const wchar_t* uid, uint32_t& status, uint32_t number) {
    return dbGetOppStatusW(uid, status, status, number);
}

const tagCase kReads[] = {
    Read(DbCommand::GetStatus, dbGetStatusW),
    Read(DbCommand::GetArchitecture, dbGetArchitectureW),
    Read(DbCommand::GetConfFlag, dbGetConfFlagW),
    Read(DbCommand::GetClientPlat, dbGetClientPlatW),
    Read(DbCommand::GetClnDomainNameAndUid, dbGetClnDomainNameAndUidW),
    Read(DbCommand::GetClnFullDomainNameAndUid, dbGetClnFullDomainNameAndUidW),
    Read(DbCommand::GetComputername, dbGetComputerNameW),
    Read(DbCommand::GetIp, dbGetIpW),
    Read(DbCommand::GetProgVer, dbGetProgVerW),
    Read(DbCommand::GetVexorBmCfg, dbGetVexorBmCfgW),
    Read(DbCommand::GetMscf, dbGetMscfW),
    Read(DbCommand::GetRtcf, dbGetRtcfW),
    Read(DbCommand::GetPscf, dbGetPscfW),
    Read(DbCommand::GetSncf, dbGetSncfW),
    Read(DbCommand::GetSpywareMscf, dbGetSpywareMscfW),
    Read(DbCommand::GetSpywareRtcf, dbGetSpywareRtcfW),
    Read(DbCommand::GetSpywarePscf, dbGetSpywarePscfW),
    Read(DbCommand::GetSpywareSncf, dbGetSpywareSncfW),
    Read(DbCommand::GetSpywareWhiteList, dbGetSpywareWhiteListW),
    Read(DbCommand::GetBackupLogAllSessions, dbGetBackupLogAllSessionsW),
    Read(DbCommand::GetPrivilege, dbGetPrivilegeW),
    Read(DbCommand::GetExtra, GetExtra),
    Read(DbCommand::GetOppStatus, GetOppStatus),
    Prebuilt(DbCommand::GetClientPassword, dbGetClientPasswordW, L"uid 1"),
    Prebuilt(DbCommand::GetServiceSwitch, dbGetServiceSwitchW, L"-"),
    Prebuilt(DbCommand::GetIcrcDestScanType, dbGetIcrcDestScanTypeW, L"uid"),
    Prebuilt(DbCommand::IsClientExisted, dbIsClientExistedW, L"uid"),
};

const tagCase kWrites[] = {
    Set(DbCommand::SetMscf, dbSetMscfW, kMain),
    SetAll(DbCommand::SetAllMscf, dbSetAllMscfW, kMain),
    Set(DbCommand::SetSpywareMscf, dbSetSpywareMscfW, kSpyware),
    SetAll(DbCommand::SetSpywareAllMscf, dbSetSpywareAllMscfW, kSpyware),
    SetFlag(DbCommand::SetMsFlg, dbSetMsFlgW),
    SetAllFlag(DbCommand::SetAllMsFlg, dbSetAllMsFlgW),
    Set(DbCommand::SetRtcf, dbSetRtcfW, kMain),
    SetAll(DbCommand::SetAllRtcf, dbSetAllRtcfW, kMain),
    Set(DbCommand::SetSpywareRtcf, dbSetSpywareRtcfW, kSpywareRealTime),
    SetAll(DbCommand::SetSpywareAllRtcf, dbSetSpywareAllRtcfW, kSpywareRealTime),
    SetFlag(DbCommand::SetRtFlg, dbSetRtFlgW),
    SetAllFlag(DbCommand::SetAllRtFlg, dbSetAllRtFlgW),
    Set(DbCommand::SetPscf, dbSetPscfW, kScheduled),
    SetAll(DbCommand::SetAllPscf, dbSetAllPscfW, kScheduled),
    Set(DbCommand::SetSpywarePscf, dbSetSpywarePscfW, kSpyware),
    SetAll(DbCommand::SetSpywareAllPscf, dbSetSpywareAllPscfW, kSpyware),
    SetFlag(DbCommand::SetPsFlg, dbSetPsFlgW),
    SetAllFlag(DbCommand::SetAllPsFlg, dbSetAllPsFlgW),
    Set(DbCommand::SetSncf, dbSetSncfW, kMain),
    SetAll(DbCommand::SetAllSncf, dbSetAllSncfW, kMain),
    Set(DbCommand::SetSpywareSncf, dbSetSpywareSncfW, kSpyware),
    SetAll(DbCommand::SetSpywareAllSncf, dbSetSpywareAllSncfW, kSpyware),
    SetFlag(DbCommand::SetSnFlg, dbSetSnFlgW),
    SetAllFlag(DbCommand::SetAllSnFlg, dbSetAllSnFlgW),
    SetAllFlag(DbCommand::SetAllConfFlg, dbSetAllConfFlgW),
    {DbCommand::SetConfFlag, [] { return dbSetConfFlagW(kUid, 0, 0x1C507); }, kUidText + L" 0 115975 0"},
    {DbCommand::SetExcludeList, [] { return dbSetExcludeListW(kUid, 0x4000, Values()); },
     kUidText + L" 16384 folder file "},
    {DbCommand::SetAllExcList, [] { return dbSetAllExcListW(0x100, Values()); }, L"256 folder file "},
    {DbCommand::SetStatus, [] { return dbSetStatusW(kUid, 3, 0xFFFFFFFF); }, kUidText + L" 3 4294967295 0"},
    {DbCommand::SetPrivilege,
     [] {
         return dbSetPrivilegeW(kUid, {1, 2}, {3, 4});
     },
     kUidText + L" 1 3 2 4"},
    {DbCommand::SetCfwActId, [] { return dbSetCfwActIdW(nullptr, L"policy"); }, L" policy"},
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

std::size_t CountNames(std::string_view list) {
    std::size_t count = list.empty() ? 0 : 1;
    for (std::size_t comma = 0; (comma = list.find(", ", comma)) != std::string_view::npos; ++comma) {
        ++count;
    }
    return count;
}

void ExpectRequest(const tagCase& expected, const tagDbRequest& request, bool answered) {
    const std::vector<std::wstring> fields = request.Fields();
    ASSERT_GE(fields.size(), 2u);
    EXPECT_EQ(fields[0], wrb::DbName(expected.command));
    EXPECT_EQ(fields[1] != L"-1", answered);
    EXPECT_EQ(std::vector(fields.begin() + 2, fields.end()), Split(expected.fields));
    EXPECT_EQ(fields.size() - 2, CountNames(wrb::DescribeDbCommand(expected.command).requestFields));
    EXPECT_TRUE(request.request.ends_with(std::string(2, '\0'))) << "no terminator";
}

TEST(DbRequests, EveryTextCommandSendsItsFields) {
    std::set<DbCommand> seen;
    for (const bool answered : {true, false}) {
        const CFakeDbService service([](const tagDbRequest&) { return wrb::test::WideBytes(L"1\t2"); });
        std::size_t count = 0;
        for (const tagCase& test : answered ? std::span<const tagCase>(kReads) : std::span<const tagCase>(kWrites)) {
            SCOPED_TRACE(testing::PrintToString(wrb::DbName(test.command)));
            EXPECT_TRUE(test.call());
            const std::vector<tagDbRequest> requests = service.WaitFor(++count);
            ASSERT_EQ(requests.size(), count);
            ExpectRequest(test, requests.back(), answered);
            seen.insert(test.command);
        }
    }
    for (const tagDbCommand& command : kDbCommands) {
        EXPECT_EQ(seen.contains(command.id), command.answer != DbAnswer::Message) << command.requestFields;
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
