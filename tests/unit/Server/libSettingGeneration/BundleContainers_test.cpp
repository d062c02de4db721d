// The containers of the setting bundles: what is special about some sections, and the way of both shapes through a
// message. The texts of the others are with their getters.
#include "BundleContainers.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "IPCMsgBufferException.h"

namespace {

// The container's text behind what `out` held, and the same from another that gets its values out of a message. The
// message cut at any byte is refused.
template <typename Container>
void ExpectText(Container& container, Container copy, const std::wstring& expected) {
    container.m_uid = L"an-agent";
    CSerializer whole;
    whole << container;
    copy.m_uid = L"old";
    for (uint32_t length = 0; length < whole.GetSize(); ++length) {
        CSerializer cut;
        cut.Load(whole.Data(), length);
        EXPECT_THROW(cut >> copy, CIPCMsgBufferException) << length;
    }
    whole >> copy;
    EXPECT_EQ(copy.m_uid, L"an-agent");
    for (const Container* one : {&container, &copy}) {
        std::wstring out = L"[Before]\n";
        one->ExportToIni(out);
        EXPECT_EQ(out, L"[Before]\n" + expected);
    }
}

TEST(BundleContainers, AddressesAreProtectedOneByOne) {
    const auto star = [](std::wstring_view item) { return L"*" + std::wstring(item); };
    CSettingContainerWtpSetting wtp(star);
    wtp.m_content = tagClientWCSConfig({0x9, 1, 2, 3, 4, 5, 6, 0xFFFFFFFF, L"a|b", L"", L"c||d", L"e"});
    ExpectText(wtp, CSettingContainerWtpSetting(star),
               L"[Web Threat Protection]\nEnablePolicyIn=1\nEnablePolicyOut=0\nSecurityLevelIn=1\nSecurityLevelOut=2\n"
               L"SendLogIn=0\nSendLogOut=1\nURLFilterCfgFlag_InOffice=3\nURLFilterCfgFlag_OutOffice=4\n"
               L"URLFilterQueryMode_InOffice=5\nURLFilterRatingLevel_InOffice=6\nURLFilterRatingLevel_OutOffice=-1\n"
               L"URLFilterAWSL_InOffice000=*a\nURLFilterAWSL_InOffice001=*b\nURLFilterAWSLCount_InOffice=2\n"
               L"URLFilterAWSLCount_OutOffice=0\nURLFilterBlackList_InOffice000=*c\n"
               L"URLFilterBlackListCount_InOffice=1\nURLFilterBlackList_OutOffice000=*e\n"
               L"URLFilterBlackListCount_OutOffice=1\n");
}

TEST(BundleContainers, ItemsAreNumbered) {
    CSettingContainerFARestoreSetting restore;
    restore.m_content.items.emplace_back(wrb::FARestoreValues{L"hash", L"task", L"item", L"dir", L"name"});
    restore.m_content.items.emplace_back(wrb::FARestoreValues{L"h", L"", L"i", L"", L"n"});
    ExpectText(restore, {},
               L"[Centralized FA Restore]\nFACount=2\nFASha1Hash_0=hash\nFATaskId_0=task\nFAItemId_0=item\n"
               L"FAFileDir_0=dir\nFAFileName_0=name\nFASha1Hash_1=h\nFATaskId_1=\nFAItemId_1=i\nFAFileDir_1=\n"
               L"FAFileName_1=n\n");
}

TEST(BundleContainers, ASectionHasAnEnd) {
    CSettingContainerQMAgentPolicy container;
    container.m_content.items.resize(10'001);
    TakeCapturedLog();
    std::wstring out;
    container.ExportToIni(out);
    EXPECT_TRUE(out.starts_with(L"[QM_AGENT_POLICY]\nPolicyCount=10000\n"));
    EXPECT_TRUE(out.ends_with(L"\nQMAPolicy9999_PolicyTypeID=\n"));
    const auto lines = TakeCapturedLog();
    EXPECT_EQ(lines.size(), 10'001u);
    EXPECT_EQ(lines.back(), (CapturedLine{'W', L"[QM_AGENT_POLICY] - items beyond the first 10000 are left out"}));
}

}  // namespace
