// What every function of the library puts on the pipe, against a database server that records it.
#include <gtest/gtest.h>

#include <algorithm>

#include "CalendarTime.h"
#include "DbAgent.h"
#include "DbCommands.h"
#include "DbListing.h"
#include "DbScanCfg.h"
#include "DbScanUpdate.h"
#include "DbTransport.h"
#include "DbVexor.h"
#include "FakeDbService.h"

namespace {

using wrb::test::DbRequest;
using wrb::test::FakeDbService;

constexpr const wchar_t* kUid = L"8b3dbf4c-2a6c-4f0a-9d36-0d8a3c1f7e55";
const std::wstring kByUid = std::wstring(kUid) + L" ";

const wrb::ScanWrite kUpdate{0x80000001, 0xFFFEFFFD, 1};

wrb::ScanGroupValues Values() {
    return {1,  2,      3,       0xFFFFFFF9,    5,      6,         7,       8,   9,     10, 11,
            12, L"ext", L"move", L"not stored", L"act", L"folder", L"file", L"", L"spy"};
}

// A call and the fields that it must send behind the reply id; a blank stands for a TAB, "-" for no field at all.
struct Case {
    DbCommand command;
    std::wstring fields;
    std::function<bool()> call;
};

template <typename... Parameters>
Case Write(DbCommand command, const std::wstring& fields, bool (*function)(Parameters...),
           std::type_identity_t<Parameters>... arguments) {
    return {command, fields, [=] { return function(arguments...); }};
}
template <typename Out>
Case Read(DbCommand command, bool (*function)(const wchar_t*, Out&, uint32_t)) {
    const auto call = [=] {
        Out out{};
        return function(kUid, out, 4294967295);
    };
    return {command, kByUid + L"4294967295", call};
}
Case Prebuilt(DbCommand command, bool (*function)(const std::wstring&, std::wstring&), const std::wstring& fields) {
    std::wstring parameters = fields == L"-" ? L"" : fields;
    std::ranges::replace(parameters, L' ', L'\t');
    const auto call = [=] {
        std::wstring text;
        return function(parameters, text);
    };
    return {command, fields, call};
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
#define WRB_SCAN_WRITES(Type, fields, spyware)                                                                        \
    Write(DbCommand::Set##Type##cf, kByUid + (fields), dbSet##Type##cfW, kUid, kUpdate, Values()),                    \
        Write(DbCommand::SetAll##Type##cf, fields, dbSetAll##Type##cfW, kUpdate, Values()),                           \
        Write(DbCommand::SetSpyware##Type##cf, kByUid + (spyware), dbSetSpyware##Type##cfW, kUid, kUpdate, Values()), \
        Write(DbCommand::SetSpywareAll##Type##cf, spyware, dbSetSpywareAll##Type##cfW, kUpdate, Values()),            \
        Write(DbCommand::Set##Type##Flg, kByUid + L"65536 65537", dbSet##Type##FlgW, kUid, 65536, 65537),             \
        Write(DbCommand::SetAll##Type##Flg, L"65536 65537", dbSetAll##Type##FlgW, 65536, 65537)
const Case kCases[] = {
    // clang-format off
    WRB_READ(GetStatus), WRB_READ(GetArchitecture), WRB_READ(GetConfFlag), WRB_READ(GetClientPlat),
    WRB_READ(GetClnDomainNameAndUid), WRB_READ(GetClnFullDomainNameAndUid), WRB_READ(GetIp), WRB_READ(GetProgVer),
    WRB_READ(GetVexorBmCfg), WRB_READ(GetMscf), WRB_READ(GetRtcf), WRB_READ(GetPscf), WRB_READ(GetSncf),
    WRB_READ(GetSpywareMscf), WRB_READ(GetSpywareRtcf), WRB_READ(GetSpywarePscf), WRB_READ(GetSpywareSncf),
    WRB_READ(GetSpywareWhiteList), WRB_READ(GetBackupLogAllSessions), WRB_READ(GetPrivilege),
    // clang-format on
    Read(DbCommand::GetComputername, dbGetComputerNameW),
    {DbCommand::ListRows, L"agents a 2 1 50 25",
     [] {
         wrb::DbListing listing;
         return wrb::ReadDbListing({L"agents", L"a", 2, true, 50, 25}, listing) && listing.total == 1;
     }},
    Read(DbCommand::GetExtra, GetExtra),
    Read(DbCommand::GetOppStatus, GetOppStatus),
    Prebuilt(DbCommand::GetClientPassword, dbGetClientPasswordW, L"uid 1"),
    Prebuilt(DbCommand::GetServiceSwitch, dbGetServiceSwitchW, L"-"),
    Prebuilt(DbCommand::GetIcrcDestScanType, dbGetIcrcDestScanTypeW, L"uid"),
    Prebuilt(DbCommand::IsClientExisted, dbIsClientExistedW, L"uid"),
    WRB_SCAN_WRITES(Ms, kMain, kSpyware),
    WRB_SCAN_WRITES(Rt, kMain, kSpywareRealTime),
    WRB_SCAN_WRITES(Ps, kScheduled, kSpyware),
    WRB_SCAN_WRITES(Sn, kMain, kSpyware),
    Write(DbCommand::SetAllConfFlg, L"65536 65537", dbSetAllConfFlgW, 65536, 65537),
    {DbCommand::SetConfFlag, kByUid + L"0 115975 0", [] { return dbSetConfFlagW(kUid, 0, 0x1C507); }},
    Write(DbCommand::SetExcludeList, kByUid + L"16384 folder file ", wrb::SetDbScanGroup,
          FindScanGroup(wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion), kUid, {}, Values()),
    Write(DbCommand::SetAllExcList, L"256 folder file ", wrb::SetDbScanGroup,
          FindScanGroup(wrb::ScanType::MS, wrb::ScanGroupKind::Exclusion), wrb::kEveryAgent, {}, Values()),
    {DbCommand::SetStatus, kByUid + L"3 4294967295 0", [] { return dbSetStatusW(kUid, 3, 0xFFFFFFFF); }},
    Write(DbCommand::SetPrivilege, kByUid + L"1 3 2 4", dbSetPrivilegeW, kUid, {1, 2}, {3, 4}),
    Write(DbCommand::SetCfwActId, L" policy", dbSetCfwActIdW, nullptr, L"policy"),
    Write(DbCommand::SetCfwLogCount, kByUid + L"-7 1 2 3 4 5 4294967295 0", dbSetCfwLogCountW, kUid, -7,
          {1, 2, 3, 4, 5, 4294967295}, L""),
    Write(DbCommand::AddAudit, L"user target setting  new", wrb::WriteDbAudit,
          {L"user", L"target", L"setting", L"", L"new"}),
    Write(DbCommand::SetSpecialLog, kByUid + L"9 text", dbSetSpecialLogW, kUid, 9, L"text"),
};

TEST(DbRequests, EveryTextCommandSendsItsFields) {
    std::set<DbCommand> seen;
    const FakeDbService service([](const DbRequest&) { return wrb::test::WideBytes(L"1\t2"); });
    std::size_t count = 0;
    for (const Case& test : kCases) {
        SCOPED_TRACE(testing::PrintToString(wrb::DbName(test.command)));
        EXPECT_TRUE(test.call());
        ++count;
        const DbRequest request = service.WaitFor(count).at(count - 1);
        const std::vector<std::wstring> fields = request.Fields();
        ASSERT_GE(fields.size(), 2u);
        EXPECT_EQ(fields[0], wrb::DbName(test.command));
        EXPECT_EQ(fields[1] == L"-1", wrb::DescribeDbCommand(test.command).answer == DbAnswer::None);
        std::wstring rest;
        for (std::size_t i = 2; i < fields.size(); ++i) {
            rest += (i > 2 ? L" " : L"") + fields[i];
        }
        EXPECT_EQ(fields.size() > 2 ? rest : L"-", test.fields);
        EXPECT_FALSE(request.headerMessage.empty()) << "no frame";
        EXPECT_TRUE(request.request.ends_with(std::string(2, '\0'))) << "no terminator";
        seen.insert(test.command);
    }
    for (const wrb::DbCommandRow& command : kDbCommands) {
        EXPECT_EQ(seen.contains(command.id), command.answer != DbAnswer::Message) << command.requestFields;
    }
}

TEST(ConvertDateTime, ReadsDigitsByPositionInTheLocalZone) {
    constexpr const char* kAhead = "AAA-3";  // three hours of UTC
    const struct {
        const wchar_t* date;
        const wchar_t* time;
        int64_t seconds;
        const char* zone = "UTC0";
    } cases[] = {
        {L"20240229", L"235959", 1709251199},
        {L"19700101", L"000001", 1},
        {L"20380119", L"031408", 2147483648},  // one more than 31 bits hold
        {L"20240301", nullptr, 1709251200},
        {L"20240301", L"12", 1709294400},              // what is missing is zero
        {L"20240301junk", L"123456junk", 1709296496},  // what is too much is not looked at
        {L"20241301", L"000000", 1735689600},          // a thirteenth month is January
        {nullptr, nullptr, 0},
        {L"19691231", L"235959", 0},
        {L"garbage!", L"garbag", 0},
        {L"20240301", L"030000", 1709251200, kAhead},
        {L"19700101", L"000000", 0, kAhead},  // before 1970 UTC
    };
    for (const auto& [date, time, seconds, zone] : cases) {
        _putenv_s("TZ", zone);
        _tzset();
        EXPECT_EQ(ConvertDateTime(date, time, 0), seconds) << (date == nullptr ? L"null" : date);
    }
    _putenv_s("TZ", "");
    _tzset();
}

}  // namespace
