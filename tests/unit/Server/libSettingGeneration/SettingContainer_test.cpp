#include "SettingContainer.h"

#include <gtest/gtest.h>

#include "ExpectedScanSections.h"
#include "IPCMsgBufferException.h"
#include "Serializer.h"

namespace {

using wrb::test::DistinctScanValues;
using wrb::test::ExpectedScanSections;

template <typename Container>
class SettingContainer : public testing::Test {};

// In the order of ExpectedScanSections.
using Containers = testing::Types<CSettingContainerMSCfg, CSettingContainerRTCfg, CSettingContainerPSCfg,
                                  CSettingContainerSNCfg, CSettingContainerMSCfgEx, CSettingContainerRTCfgEx,
                                  CSettingContainerPSCfgEx, CSettingContainerSNCfgEx, CSettingContainerSpyMSCfg,
                                  CSettingContainerSpyRTCfg, CSettingContainerSpyPSCfg, CSettingContainerSpySNCfg>;
class Names {
  public:
    template <typename>
    static std::string GetName(int index) {
        return std::to_string(index);
    }
};
TYPED_TEST_SUITE(SettingContainer, Containers, Names);

const wrb::test::tagExpectedSection& ExpectedOfThisTest() {
    const std::string suite = testing::UnitTest::GetInstance()->current_test_info()->test_suite_name();
    return ExpectedScanSections().at(std::stoul(suite.substr(suite.rfind('/') + 1)));
}

TYPED_TEST(SettingContainer, WhatWasSerializedRendersTheSameAndEveryCutIsRefused) {
    TypeParam sent;
    sent.m_uid = L"some uid";
    sent.m_values = DistinctScanValues(0x12345678);
    CSerializer message;
    message << sent;
    for (uint32_t length = 0; length < message.GetSize(); length += 3) {
        CSerializer cut;
        cut.Load(message.Data(), length);
        TypeParam received;
        EXPECT_THROW(cut >> received, CIPCMsgBufferException) << length;
    }
    TypeParam received;
    message >> received;
    std::wstring out;
    received.ExportToIni(out);
    EXPECT_EQ(out, ExpectedOfThisTest().Text(sent.m_uid, sent.m_values));
}

// Uid, numbers, texts: each a length and its bytes.
TEST(SettingContainerBytes, AreTheFieldsInDeclaredOrder) {
    CSettingContainerMSCfgEx container;
    container.m_uid = L"u";
    container.m_values.flags = 0x00010002;
    container.m_values.excludedFolder = L"f";
    container.m_values.excludedExt = L"x";
    CSerializer message;
    message << container;
    const std::string_view expected(
        "\4\0\0\0u\0\0\0"
        "\4\0\0\0\2\0\1\0"
        "\4\0\0\0f\0\0\0"
        "\2\0\0\0\0\0"
        "\4\0\0\0x\0\0\0",
        38);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(message.Data()), message.GetSize()), expected);
}

}  // namespace
