#include "Mask.h"

#include <gtest/gtest.h>

#include "CommandMessage.h"

namespace wrb {
namespace {

constexpr wchar_t kUid[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";

TEST(Mask, KeepsNumbersAndNamesAndReplacesTheRest) {
    Mask mask;
    const std::wstring uid = mask.Answer(kUid, false);
    const std::wstring text = mask.Answer(L"C:\\secret", false);
    EXPECT_EQ(uid.size(), 36u);
    EXPECT_NE(uid, kUid);
    EXPECT_TRUE(IsTextMask(text)) << "in any case the same form";
    EXPECT_EQ(mask.Answer(L"3F2A6C10-5B1E-4D27-9A64-0C8E7D51B2F3", false), uid) << "letters of either case";
    EXPECT_NE(Mask().Answer(kUid, false), uid) << "another recording";
    const std::wstring agent = std::wstring(L"\t") + kUid;
    const struct {
        std::wstring message;
        std::wstring masked;
    } kMessages[] = {
        {L"CMDHL_GET_MS_CFG\tC:\\secret" + agent, L"CMDHL_GET_MS_CFG\t" + text + L"\t" + uid},
        {L"CMDHL_SET_MS_CFG_EX" + agent + L"\t1\t\t-7\tC:\\secret",
         L"CMDHL_SET_MS_CFG_EX\t" + uid + L"\t1\t\t-7\t" + text},
        {L"CMDHL_CLEAR_INI_CACHE", L"CMDHL_CLEAR_INI_CACHE"},
        {L"C:\\secret\t12", text + L"\t12"},
    };
    for (const auto& row : kMessages) {
        EXPECT_EQ(mask.Message(row.message), row.masked);
    }
    const struct {
        const wchar_t* answer;
        bool isIni;
        std::wstring masked;
    } kAnswers[] = {
        {L"[A b]\nUID=3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3\r\nMoveDir=C:\\secret\nLevel=-1\nEmpty=\n", true,
         L"[A b]\nUID=" + uid + L"\r\nMoveDir=" + text + L"\nLevel=-1\nEmpty=\n"},
        {L"C:\\secret\t17\t3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3", false, text + L"\t17\t" + uid},
        {L"C:\\secret", true, text},
        {L"", true, L""},
    };
    for (const auto& row : kAnswers) {
        EXPECT_EQ(mask.Answer(row.answer, row.isIni), row.masked);
    }
}

// Whatever it is, none of it stays.
TEST(Mask, LeavesNoWordOfATextThatLooksLikeAnIni) {
    Mask mask;
    for (const wchar_t* text :
         {L"secret=1", L"[secret]", L"12secret", L"-secret", L"~secret", L"123456789012345678901"}) {
        EXPECT_TRUE(IsTextMask(mask.Answer(text, false)));
        const std::wstring message = std::wstring(L"CMDHL_ECHO\tpipe\t") + text;
        EXPECT_EQ(mask.Message(message).find(L"secret"), std::wstring::npos);
    }
    for (const wchar_t* text : {L"", L"~", L"~0123456789a", L"~0123456789abc", L"~0123456789aX", L"x0123456789ab"}) {
        EXPECT_FALSE(IsTextMask(text)) << text;
    }
}

}  // namespace
}  // namespace wrb
