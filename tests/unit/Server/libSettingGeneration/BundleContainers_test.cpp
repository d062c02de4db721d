// The containers of the setting bundles: the text of each, and their way through a message.
#include "BundleContainers.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "IPCMsgBufferException.h"

namespace {

std::wstring Star(std::wstring_view item) {
    return L"*" + std::wstring(item);
}

struct WtpWithStars : wrb::CBundleContainer<wrb::SettingRecord<tagWtpValues>> {
    void ExportToIni(std::wstring& out) const {
        CSettingContainerWtpSetting container(Star);
        container.m_content = m_content;
        container.ExportToIni(out);
    }
};

template <typename Container, typename Content>
Container Make(const Content& content) {
    Container container;
    container.m_uid = L"an-agent";
    container.m_content = content;
    return container;
}

template <typename Values>
auto Items(std::initializer_list<Values> values) {
    wrb::SettingRecordList<wrb::SettingRecord<Values>> list;
    for (const Values& one : values) {
        list.items.emplace_back(one);
    }
    return list;
}

std::string Bytes(const ISerializable& record) {
    CSerializer serializer;
    serializer << record;
    return {reinterpret_cast<const char*>(serializer.Data()), serializer.GetSize()};
}

// The container's text behind what `out` held, and the same from a copy that has been in a message. The message cut at
// any byte is refused.
template <typename Container>
void ExpectText(const Container& container, const std::wstring& expected) {
    const std::string bytes = Bytes(container);
    Container copy;
    copy.m_uid = L"old";
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        CSerializer serializer;
        serializer.Load(bytes.data(), static_cast<uint32_t>(length));
        if (length < bytes.size()) {
            EXPECT_THROW(serializer >> copy, CIPCMsgBufferException) << length;
        } else {
            serializer >> copy;
        }
    }
    EXPECT_EQ(copy.m_uid, L"an-agent");
    for (const Container& one : {container, copy}) {
        std::wstring out = L"[Before]\n";
        one.ExportToIni(out);
        EXPECT_EQ(out, L"[Before]\n" + expected);
    }
}

TEST(BundleContainers, TextOfEach) {
    tagWtpValues wtp;
    wtp.flags = tagWtpValues::kEnablePolicyIn | tagWtpValues::kSendLogOut;
    wtp.securityLevelIn = 1;
    wtp.securityLevelOut = 2;
    wtp.filterFlagIn = 3;
    wtp.filterFlagOut = 4;
    wtp.queryModeIn = 5;
    wtp.ratingLevelIn = 6;
    wtp.ratingLevelOut = 0xFFFFFFFF;
    wtp.approvedIn = L"a|b";
    wtp.blockedIn = L"c||d";
    wtp.blockedOut = L"e";
    ExpectText(Make<WtpWithStars>(wrb::SettingRecord(wtp)),
               L"[Web Threat Protection]\nEnablePolicyIn=1\nEnablePolicyOut=0\nSecurityLevelIn=1\nSecurityLevelOut=2\n"
               L"SendLogIn=0\nSendLogOut=1\nURLFilterCfgFlag_InOffice=3\nURLFilterCfgFlag_OutOffice=4\n"
               L"URLFilterQueryMode_InOffice=5\nURLFilterRatingLevel_InOffice=6\nURLFilterRatingLevel_OutOffice=-1\n"
               L"URLFilterAWSL_InOffice000=*a\nURLFilterAWSL_InOffice001=*b\nURLFilterAWSLCount_InOffice=2\n"
               L"URLFilterAWSLCount_OutOffice=0\nURLFilterBlackList_InOffice000=*c\n"
               L"URLFilterBlackListCount_InOffice=1\nURLFilterBlackList_OutOffice000=*e\n"
               L"URLFilterBlackListCount_OutOffice=1\n");

    tagNcieValues ncie;
    ncie.flags = tagNcieValues::kEnableRR;
    ncie.actionForCNP = 1;
    ncie.actionForRR = 2;
    ncie.actionForUserDefine = 3;
    ncie.actionForSBA = 4;
    ExpectText(Make<CSettingContainerNCIESetting>(wrb::SettingRecord(ncie)),
               L"[NCIE Settings]\nEnableRR=1\nEnableCNP=0\nEnableGC=0\nActionForCNP=1\nActionForRR=2\n"
               L"ActionForUserDefine=3\nActionForSBA=4\n");

    tagSampleSubmissionValues sample;
    sample.flags = tagSampleSubmissionValues::kEnable;
    ExpectText(Make<CSettingContainerSampleSubmissionSetting>(wrb::SettingRecord(sample)),
               L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=1\n");

    tagSablexValues sablex;
    sablex.flags = tagSablexValues::kEnableSablex;
    sablex.actionForFile = 1;
    sablex.actionForProcess = 2;
    sablex.exceptions = L"C:\\a b.exe|D:\\";
    ExpectText(
        Make<CSettingContainerSablexSetting>(wrb::SettingRecord(sablex)),
        L"[Sablex_Settings]\nEnableSablex=1\nEnableFile=0\nEnableProcess=0\nActionForFile=1\nActionForProcess=2\n"
        L"ExceptionCount=2\nExceptionItem000=C:\\a b.exe\nExceptionItem001=D:\\\nDS_ProcessCount=0\n");

    tagAggrScanValues aggr;
    aggr.cfg = 0xFFFFFFFF;
    aggr.detectFlag = 7;
    aggr.detectFlagForIProduct = 8;
    ExpectText(Make<CSettingContainerAggrScanSetting>(wrb::SettingRecord(aggr)),
               L"[AggrScan Settings]\nEnableMitre=1\nAggreDetectFlag=7\nAggreDetectFlagForIProduct=8\n");

    ExpectText(Make<CSettingContainerFARestoreSetting>(Items<tagFARestoreValues>(
                   {{L"hash", L"task", L"item", L"dir", L"name"}, {L"h", L"", L"i", L"", L"n"}})),
               L"[Centralized FA Restore]\nFACount=2\nFASha1Hash_0=hash\nFATaskId_0=task\nFAItemId_0=item\n"
               L"FAFileDir_0=dir\nFAFileName_0=name\nFASha1Hash_1=h\nFATaskId_1=\nFAItemId_1=i\nFAFileDir_1=\n"
               L"FAFileName_1=n\n");
    ExpectText(Make<CSettingContainerFARestoreSetting>(Items<tagFARestoreValues>({})),
               L"[Centralized FA Restore]\nFACount=0\n");

    TakeCapturedLog();
    ExpectText(Make<CSettingContainerQMAgentPolicy>(Items<tagPolicyTrackingValues>({{L"100%s", L"noon", L"me", L"7"}})),
               L"[QM_AGENT_POLICY]\nPolicyCount=1\nQMAPolicy0_Name=100%s\nQMAPolicy0_LastUpdateTime=noon\n"
               L"QMAPolicy0_PolicyOwner=me\nQMAPolicy0_PolicyTypeID=7\n");
    const tagCapturedLine line{8,
                               L"CSettingContainerQMAgentPolicy::ExportToIni - Policy name = 100%s, PolicyOwner = me, "
                               L"PolicyTypeID = 7,"};
    EXPECT_EQ(TakeCapturedLog(), (std::vector{line, line}));
}

TEST(BundleContainers, ASectionHasAnEnd) {
    CSettingContainerQMAgentPolicy container;
    container.m_content.items.resize(10'001);
    std::wstring out;
    container.ExportToIni(out);
    EXPECT_TRUE(out.starts_with(L"[QM_AGENT_POLICY]\nPolicyCount=10000\n"));
    EXPECT_TRUE(out.ends_with(L"\nQMAPolicy9999_PolicyTypeID=\n"));
    const auto lines = TakeCapturedLog();
    EXPECT_EQ(lines.size(), 10'001u);
    EXPECT_EQ(lines.back(), (tagCapturedLine{'W', L"[QM_AGENT_POLICY] - items beyond the first 10000 are left out"}));
}

}  // namespace
