// How answers of every shape are read, the sound ones and the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DbAgent.h"
#include "DbScanCfg.h"
#include "FakeDbService.h"
#include "ScanNumbers.h"

namespace {

using testing::ElementsAre;
using wrb::test::CFakeDbService;
using wrb::test::tagDbRequest;
using wrb::test::WideBytes;

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
        m_answer = WideBytes(text) + (text.size() == 10 ? "x" : "");  // half a character is not looked at
        std::wstring read = L"old";
        EXPECT_TRUE(dbGetClnDomainNameAndUidW(L"uid", read));
        EXPECT_TRUE(read == text) << text.size();
    }
}

TEST_F(DbAnswers, ScanNumbersAreReadInOrder) {
    tagScanGroupValues values;
    m_answer = WideBytes(L"-2147483647\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13");
    EXPECT_TRUE(dbGetPscfW(L"uid", values));
    EXPECT_TRUE((values == Numbers({0x80000001, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})));
    for (const auto read : {dbGetMscfW, dbGetRtcfW, dbGetSncfW}) {
        values = {};
        EXPECT_TRUE(read(L"uid", values, 0));
        EXPECT_TRUE((values == Numbers({0x80000001, 2, 3, 4})));
    }
}

TEST_F(DbAnswers, ScanNumbersOfABrokenAnswerAreZero) {
    const tagScanGroupValues old = Numbers({9, 9, 9, 9});
    const struct {
        std::string answer;
        tagScanGroupValues values;
    } cases[] = {
        {WideBytes(L"1\t2"), Numbers({1, 2})},
        {WideBytes(L"text\t\u6F22\t-\t4 or 5"), Numbers({0, 0, 0, 4})},
        {WideBytes(std::wstring_view(L"1\t2\0\t3\t4", 8)), Numbers({1, 2})},
        {"x", old},  // not one character
        {"", old},
    };
    for (const auto& [answer, expected] : cases) {
        m_answer = answer;
        tagScanGroupValues values = old;
        EXPECT_EQ(dbGetMscfW(L"uid", values), !(expected == old)) << answer;
        EXPECT_TRUE(values == expected) << answer;
    }
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

}  // namespace
