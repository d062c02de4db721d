// What every function of the library puts on the pipe, against a database server that records it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "DbAgent.h"
#include "DbAllScan.h"
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
    return {1,  2,      3,       0xFFFFFFF9,    5,      6,         7,       8,   9,     10, 11,
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

constexpr const wchar_t* kMain = L"2147483649 4294901757 2 3 -7 ext move act 1";
constexpr const wchar_t* kScheduled = L"2147483649 4294901757 2 3 -7 5 6 7 8 9 10 11 12 ext move act 1";
constexpr const wchar_t* kSpyware = L"2147483649 4294901757 spy 1";
constexpr const wchar_t* kSpywareRealTime = L"2147483649 4294901757 1";

bool GetExtra(const wchar_t* uid, std::wstring& text, uint32_t configBit) {
    return dbGetExtraW(uid, configBit, text);
}
bool GetOppStatus(const wchar_t* uid, uint32_t& status, uint32_t number) {
    return dbGetOppStatusW(uid, status, status, number);
}

#define WRB_READ(name) Read(DbCommand::name, db##name##W)
const tagCase kReads[] = {
    // clang-format off
    WRB_READ(GetStatus), WRB_READ(GetArchitecture), WRB_READ(GetConfFlag), WRB_READ(GetClientPlat),
    WRB_READ(GetClnDomainNameAndUid), WRB_READ(GetClnFullDomainNameAndUid), WRB_READ(GetIp), WRB_READ(GetProgVer),
    WRB_READ(GetVexorBmCfg), WRB_READ(GetMscf), WRB_READ(GetRtcf), WRB_READ(GetPscf), WRB_READ(GetSncf),
    WRB_READ(GetSpywareMscf), WRB_READ(GetSpywareRtcf), WRB_READ(GetSpywarePscf), WRB_READ(GetSpywareSncf),
    WRB_READ(GetSpywareWhiteList), WRB_READ(GetBackupLogAllSessions), WRB_READ(GetPrivilege),
    // clang-format on
    Read(DbCommand::GetComputername, dbGetComputerNameW),
    Read(DbCommand::GetExtra, GetExtra),
    Read(DbCommand::GetOppStatus, GetOppStatus),
    Prebuilt(DbCommand::GetClientPassword, dbGetClientPasswordW, L"uid 1"),
    Prebuilt(DbCommand::GetServiceSwitch, dbGetServiceSwitchW, L"-"),
    Prebuilt(DbCommand::GetIcrcDestScanType, dbGetIcrcDestScanTypeW, L"uid"),
    Prebuilt(DbCommand::IsClientExisted, dbIsClientExistedW, L"uid"),
};

#define WRB_SCAN_WRITES(Type, fields, spyware)                                           \
    Set(DbCommand::Set##Type##cf, dbSet##Type##cfW, fields),                             \
        SetAll(DbCommand::SetAll##Type##cf, dbSetAll##Type##cfW, fields),                \
        Set(DbCommand::SetSpyware##Type##cf, dbSetSpyware##Type##cfW, spyware),          \
        SetAll(DbCommand::SetSpywareAll##Type##cf, dbSetSpywareAll##Type##cfW, spyware), \
        SetFlag(DbCommand::Set##Type##Flg, dbSet##Type##FlgW),                           \
        SetAllFlag(DbCommand::SetAll##Type##Flg, dbSetAll##Type##FlgW)
const tagCase kWrites[] = {
    WRB_SCAN_WRITES(Ms, kMain, kSpyware),
    WRB_SCAN_WRITES(Rt, kMain, kSpywareRealTime),
    WRB_SCAN_WRITES(Ps, kScheduled, kSpyware),
    WRB_SCAN_WRITES(Sn, kMain, kSpyware),
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

TEST(DbRequests, EveryTextCommandSendsItsFields) {
    std::set<DbCommand> seen;
    for (const bool answered : {true, false}) {
        const CFakeDbService service([](const tagDbRequest&) { return wrb::test::WideBytes(L"1\t2"); });
        std::size_t count = 0;
        for (const tagCase& test : answered ? std::span<const tagCase>(kReads) : std::span<const tagCase>(kWrites)) {
            SCOPED_TRACE(testing::PrintToString(wrb::DbName(test.command)));
            EXPECT_TRUE(test.call());
            ++count;
            const tagDbRequest request = service.WaitFor(count).at(count - 1);
            const std::vector<std::wstring> fields = request.Fields();
            ASSERT_GE(fields.size(), 2u);
            EXPECT_EQ(fields[0], wrb::DbName(test.command));
            EXPECT_EQ(fields[1] != L"-1", answered);
            std::wstring rest;
            for (std::size_t i = 2; i < fields.size(); ++i) {
                rest += (i > 2 ? L" " : L"") + fields[i];
            }
            EXPECT_EQ(fields.size() > 2 ? rest : L"-", test.fields);
            EXPECT_FALSE(request.headerMessage.empty()) << "no frame";
            EXPECT_TRUE(request.request.ends_with(std::string(2, '\0'))) << "no terminator";
            seen.insert(test.command);
        }
    }
    for (const tagDbCommand& command : kDbCommands) {
        EXPECT_EQ(seen.contains(command.id), command.answer != DbAnswer::Message) << command.requestFields;
    }
}

TEST(DbRequests, SerializedCommandsCarryTheUidInThirtySixCharacters) {
    const CFakeDbService service([](const tagDbRequest&) { return std::string(); });
    tagClnAllScanCfg cfg;
    tagVEXORCustomBmCfg bm;
    dbGetClnAllScanCfgW((kUidText + L"beyond").c_str(), cfg, L"a");
    dbGetVexorCustomBmCfgW(nullptr, bm);
    const auto requests = service.WaitFor(2);
    ASSERT_EQ(requests.size(), 2u);
    for (const tagDbRequest& request : requests) {
        const bool isFirst = &request == requests.data();
        EXPECT_TRUE(request.IsMessage());
        EXPECT_THAT(request.Texts(),
                    testing::ElementsAre(isFirst ? L"DBV2_CLIENT_GET_ALL_SCAN_CFG" : L"DBV2_GET_VEXOR_CUSTOM_BM_CFG",
                                         testing::StartsWith(L"0105" + request.Name()), isFirst ? kUid : L""));
    }
}

}  // namespace
