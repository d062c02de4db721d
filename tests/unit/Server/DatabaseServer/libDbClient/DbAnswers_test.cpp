// How answers of every shape are read, the sound ones and the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DbAgent.h"
#include "DbAllScan.h"
#include "DbScanCfg.h"
#include "DbVexor.h"
#include "FakeDbService.h"
#include "Serializer.h"

namespace {

using testing::ElementsAre;
using wrb::test::CFakeDbService;
using wrb::test::tagDbRequest;
using wrb::test::WideBytes;

// The numbers of a scan type in the order of the answer; those that are not given are 0.
tagScanGroupValues Numbers(std::initializer_list<uint32_t> numbers) {
    using Values = tagScanGroupValues;
    constexpr uint32_t Values::*kMembers[] = {&Values::flags,
                                              &Values::compressedLayer,
                                              &Values::oleLayer,
                                              &Values::possibleVirusCustActInActiveAct,
                                              &Values::frequency,
                                              &Values::hour,
                                              &Values::minute,
                                              &Values::amPm,
                                              &Values::dayOfMonth,
                                              &Values::dayOfWeek,
                                              &Values::weekOrdinalOfMonth,
                                              &Values::weekdayOfMonth};
    Values values;
    std::size_t next = 0;
    for (const uint32_t number : numbers) {
        values.*kMembers[next++] = number;
    }
    return values;
}

// A database server whose next answer the test sets; calls and answers take turns.
class DbAnswers : public testing::Test {
  protected:
    DbAnswers() : m_service([this](const tagDbRequest&) { return m_answer; }) {}

    std::string m_answer;
    CFakeDbService m_service;
};

TEST_F(DbAnswers, NumberIsReadAsFarAsItGoes) {
    const struct {
        std::string answer;
        uint32_t number;
    } cases[] = {
        {WideBytes(L"12"), 12},
        {WideBytes(L"-1"), 0xFFFFFFFF},
        {WideBytes(L"-2147483647"), 0x80000001},
        {WideBytes(L"4294967295"), 0xFFFFFFFF},
        {WideBytes(L"2147483649"), 0x80000001},
        {WideBytes(L"-99999999999999999999999999"), 0},
        {WideBytes(L"7 and more"), 7},
        {WideBytes(std::wstring_view(L"8\0009", 3)), 8},
        {WideBytes(L"text"), 0},
        {"", 0},
        {"5", 0},  // half a character
        {WideBytes(L"66") + "6", 66},
    };
    for (const auto& [answer, number] : cases) {
        m_answer = answer;
        uint32_t read = 99;
        EXPECT_TRUE(dbGetClientPlatW(L"uid", read));
        EXPECT_EQ(read, number) << answer;
    }
}

TEST_F(DbAnswers, TextComesAsItIs) {
    for (const std::wstring& text : {std::wstring(L"domain\tuid"), std::wstring(), std::wstring(L"nul\0inside", 10),
                                     std::wstring(600'000, L'\u00E9')}) {
        m_answer = WideBytes(text);
        std::wstring read = L"old";
        EXPECT_TRUE(dbGetClnDomainNameAndUidW(L"uid", read));
        EXPECT_TRUE(read == text) << text.size();
        EXPECT_TRUE(dbGetVexorBmCfgW(L"uid", read));
        EXPECT_TRUE(read == text) << text.size();
    }
    m_answer = WideBytes(L"odd") + "x";
    std::wstring read;
    EXPECT_TRUE(dbGetIpW(L"uid", read));
    EXPECT_EQ(read, L"odd");
}

TEST_F(DbAnswers, ScanNumbersAreReadInOrder) {
    tagScanGroupValues values;
    m_answer = WideBytes(L"-2147483647\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13");
    EXPECT_TRUE(dbGetPscfW(L"uid", values));
    EXPECT_TRUE(values == (Numbers({0x80000001, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})));
    for (const auto read : {dbGetMscfW, dbGetRtcfW, dbGetSncfW}) {
        values = {};
        EXPECT_TRUE(read(L"uid", values, 0));
        EXPECT_TRUE(values == (Numbers({0x80000001, 2, 3, 4})));
    }
}

TEST_F(DbAnswers, ScanNumbersOfABrokenAnswerAreZero) {
    const tagScanGroupValues old = Numbers({9, 9, 9, 9});
    const struct {
        std::string answer;
        tagScanGroupValues values;
    } cases[] = {
        {WideBytes(L"1\t2"), Numbers({1, 2, 0, 0})},
        {WideBytes(L"\t\t\t"), Numbers({0, 0, 0, 0})},
        {WideBytes(L"text\t\u6F22\t-\t4 or 5"), Numbers({0, 0, 0, 4})},
        {WideBytes(std::wstring_view(L"1\t2\0\t3\t4", 8)), Numbers({1, 2, 0, 0})},
        {"x", Numbers({9, 9, 9, 9})},  // not one character
        {"", Numbers({9, 9, 9, 9})},
    };
    for (const auto& [answer, expected] : cases) {
        m_answer = answer;
        tagScanGroupValues values = old;
        EXPECT_EQ(dbGetMscfW(L"uid", values), !(expected == old)) << answer;
        EXPECT_TRUE(values == expected) << answer;
    }
}

TEST_F(DbAnswers, SpywareGroupHasAListButForRealTime) {
    m_answer = WideBytes(L"16777473\tMP3;TXT;\tspare");
    for (const auto read : {dbGetSpywareMscfW, dbGetSpywarePscfW, dbGetSpywareSncfW, dbGetSpywareRtcfW}) {
        tagScanGroupValues values;
        EXPECT_TRUE(read(L"uid", values, 0));
        EXPECT_EQ(values.flags, 0x01000101u);
        EXPECT_EQ(values.excludeFileExtList, read == dbGetSpywareRtcfW ? L"" : L"MP3;TXT;");
    }
}

// An exclusion group asks for the scan type's numbers and takes the option word only.
TEST_F(DbAnswers, ExclusionGroupTakesTheOptionWord) {
    m_answer = WideBytes(L"65536\t2\t3\t4");
    tagScanGroupValues values;
    const auto& group = wrb::FindScanGroup(wrb::ScanType::SN, wrb::ScanGroupKind::Exclusion);
    EXPECT_TRUE(wrb::GetDbScanGroup(group, L"uid", values));
    EXPECT_TRUE(values == Numbers({65536}));
    EXPECT_EQ(m_service.WaitFor(1).at(0).Name(), L"DB_GET_SNCF");
}

TEST_F(DbAnswers, RecordsOfNumbers) {
    m_answer = WideBytes(L"1\t-1");
    uint32_t status = 0;
    uint32_t endTime = 0;
    EXPECT_TRUE(dbGetOppStatusW(L"uid", status, endTime));
    EXPECT_EQ(status, 1u);
    EXPECT_EQ(endTime, 0xFFFFFFFF);
    tagDbPrivilege privilege;
    EXPECT_TRUE(dbGetPrivilegeW(L"uid", privilege));
    EXPECT_EQ(privilege.word1, 1u);
    EXPECT_EQ(privilege.word2, 0xFFFFFFFF);
    m_answer.clear();
    EXPECT_FALSE(dbGetPrivilegeW(L"unknown", privilege));
}

TEST_F(DbAnswers, ListEndsAtTheFirstEmptyItem) {
    std::vector<std::wstring> items{L"old"};
    m_answer = WideBytes(L"one\ttwo\t\tfour");
    EXPECT_TRUE(dbGetSpywareWhiteListW(L"uid", items));
    EXPECT_THAT(items, ElementsAre(L"one", L"two"));
    m_answer = WideBytes(L"\t");
    EXPECT_TRUE(dbGetSpywareWhiteListW(L"uid", items));
    EXPECT_THAT(items, ElementsAre());
}

TEST_F(DbAnswers, SerializedRecords) {
    tagClnAllScanCfg cfg;
    cfg.hasConfig = true;
    cfg.scans[3].custAction = L"last";
    CSerializer body;
    body << cfg;
    m_answer = wrb::test::MessageBytes(L"any", {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
    tagClnAllScanCfg read;
    EXPECT_TRUE(dbGetClnAllScanCfgW(L"uid", read, L"caller"));
    EXPECT_EQ(read.scans[3].custAction, L"last");

    body.Reset();
    body << tagVEXORCustomBmCfg();
    m_answer = wrb::test::MessageBytes(L"any", {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
    tagVEXORCustomBmCfg bm;
    bm.policies.emplace_back();
    EXPECT_TRUE(dbGetVexorCustomBmCfgW(L"uid", bm));
    EXPECT_TRUE(bm.policies.empty());
}

}  // namespace
