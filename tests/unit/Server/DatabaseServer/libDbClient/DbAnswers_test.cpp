// How answers of every shape are read, the sound ones and the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DbAgent.h"
#include "DbScanCfg.h"
#include "FakeDbService.h"

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
