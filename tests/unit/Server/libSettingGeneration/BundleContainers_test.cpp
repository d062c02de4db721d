// The containers of the setting bundles: the way through a message, and the end of a section. The texts of the others
// are with their getters.
#include "BundleContainers.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "KeyedSettings.h"

namespace {

TEST(BundleContainers, UidAndContentTravelInAMessage) {
    CSettingContainerFARestoreSetting container;
    container.m_uid = L"an-agent";
    container.m_content.items.emplace_back(wrb::FARestoreValues{L"hash", L"task", L"item", L"dir", L"name"});
    container.m_content.items.emplace_back(wrb::FARestoreValues{L"h", L"", L"i", L"", L"n"});
    CSerializer whole;
    whole << container;
    CSettingContainerFARestoreSetting copy;
    copy.m_uid = L"old";
    whole >> copy;
    EXPECT_EQ(copy.m_uid, L"an-agent");
    for (const auto* one : {&container, &copy}) {
        std::wstring out = L"[Before]\n";
        one->ExportToIni(out);
        EXPECT_EQ(out,
                  L"[Before]\n[Centralized FA Restore]\nFACount=2\nFASha1Hash_0=hash\nFATaskId_0=task\n"
                  L"FAItemId_0=item\nFAFileDir_0=dir\nFAFileName_0=name\nFASha1Hash_1=h\nFATaskId_1=\n"
                  L"FAItemId_1=i\nFAFileDir_1=\nFAFileName_1=n\n");
    }
}

// Every value is another: a number or the key's own name.
TEST(KeyedSettings, ComeOutOfAMessageAsTheyWent) {
    CSettingContainerCriticalSetting critical;
    critical.m_uid = L"an-agent";
    uint32_t number = 0;
    critical.ForEach([&](const wchar_t*, const wrb::SettingKey& key, wrb::SettingValue& value) {
        key.kind == wrb::KeyKind::Text ? void(value.text = key.name) : void(value.number = number++);
    });
    CSerializer whole;
    whole << critical;
    CSettingContainerCriticalSetting copy;
    whole >> copy;
    EXPECT_EQ(copy.m_uid, L"an-agent");
    std::wstring texts[2];
    critical.ExportToIni(texts[0]);
    copy.ExportToIni(texts[1]);
    EXPECT_NE(texts[0].find(L"\nProxy_IP=Proxy_IP\nProxy_Port=3\nProxy_Login="), std::wstring::npos);
    EXPECT_EQ(texts[0], texts[1]);
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
