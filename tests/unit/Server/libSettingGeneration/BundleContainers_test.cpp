// The containers of the setting bundles: what is special about some sections, and the way of both shapes through a
// message. The texts of the others are with their getters.
#include "BundleContainers.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"

namespace {

// The container's text behind what `out` held, and the same from another that gets its values out of a message.
template <typename Container>
void ExpectText(Container& container, Container copy, const std::wstring& expected) {
    container.m_uid = L"an-agent";
    CSerializer whole;
    whole << container;
    copy.m_uid = L"old";
    whole >> copy;
    EXPECT_EQ(copy.m_uid, L"an-agent");
    for (const Container* one : {&container, &copy}) {
        std::wstring out = L"[Before]\n";
        one->ExportToIni(out);
        EXPECT_EQ(out, L"[Before]\n" + expected);
    }
}

TEST(BundleContainers, ValuesStandInTheirOrder) {
    CSettingContainerAggrScanSetting aggr;
    aggr.m_content = tagClientAggrScanConfig({0x1, 2, 0xFFFFFFFF});
    ExpectText(aggr, {}, L"[AggrScan Settings]\nEnableMitre=1\nAggreDetectFlag=2\nAggreDetectFlagForIProduct=-1\n");
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
