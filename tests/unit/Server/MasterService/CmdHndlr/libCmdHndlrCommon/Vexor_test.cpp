// The policy document of an agent and its sections, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include "DbVexor.h"
#include "Fixtures.h"
#include "PolicyDocument.h"
#include "XmlElement.h"
#include "cmdhm_Vexor.h"

namespace {

using wrb::test::DbRequest;
using wrb::test::FakeDbService;
using wrb::test::WideBytes;

const std::wstring kDocument =
    LR"(<?xml version='1.0'?><!-- all of it --><Policy Unknown='1'>
<Behaviour DefaultAction='-3'><Engine Enable='1' EnableTD='7' EnableDRE='0' EnableUMHExploit='1'/>
<Exception ImagePath='C:\a&amp;b&#x41;&#66;.exe'/><Exception/><TrustedProgram ImagePath='t&#10;[x]'/>text &lt;
<TrustedProgram ImagePath='u'/></Behaviour><Unknown><![CDATA[&]]></Unknown>
<ApplicationControl><Executable ExecutableItem='g' ExecutableType='2'/><Approved ApprovedItem='&#x1F600;'/>
<Approved ApprovedItem='w'/></ApplicationControl><DeviceControl><InOffice><DevicePolicy DCPolicyGUID='g0' PopAlert='1'>
<User Name='one'/><User Name='two'/><Rule Enable='1' Action='2' PolicyId='d0' Type='4294967295' Item='i0'/><Rule/>
</DevicePolicy><DevicePolicy/></InOffice><OutOfOffice Enable='1'><DevicePolicy DCPolicyGUID='g1'><Rule Item='i1'/>
</DevicePolicy></OutOfOffice></DeviceControl></Policy>)";

constexpr wchar_t kPolicies[] =
    L"[VEXOR_BMPolicy]\nCount=4\nPolicyId0=a\nAction0=1\nEnable0=1\nPolicyId1=b\nAction1=9\nEnable1=0\nPolicyId2=A\n"
    L"Action2=-3\nEnable2=1\nPolicyId3=new\nAction3=5\nEnable3=1\n";

constexpr wchar_t kSections[] =
    L"[VEXOR_Exception]\nImagePath0=C:\\a&bAB.exe\nImagePath1=\nTPList=t [x]|u\n"
    L"[VEXOR_Engine]\nEnable=1\nEnableBM=0\nEnableTD=1\nEnableTDC=0\nEnableADC=0\nEnableSRP=0\nEnableDRE=0\nEnableUMH="
    L"0\n"
    L"EnableUMHExploit=1\n"
    L"[VEXOR_DACPolicy]\nExecutableListCount=1\nApprovedListCount=2\n"
    L"[DAC_EXECUTABLE_LIST]\nExecutableItem0=g\nExecutableType0=2\n"
    L"[DAC_APPROVED_LIST]\nApprovedItem0=\xD83D\xDE00\nApprovedItem1=w\n"
    L"[VEXOR_UserBased_DC_Config]\nDCPolicyCountIn=2\nDCPolicyCountOut=1\nEnableIn=0\nEnableOut=1\n"
    L"[VEXOR_DCPolicyIn_0]\nDCPolicyGUID=g0\nDCUser=one|two\nEnable0=1\nAction0=2\nPolicyId0=d0\nType0=-1\nItem0=i0\n"
    L"Enable1=0\nAction1=0\nPolicyId1=\nType1=0\nItem1=\nCount=2\nPopAlert=1\n"
    L"[VEXOR_DCPolicyIn_1]\nDCPolicyGUID=\nDCUser=\nCount=0\nPopAlert=0\n"
    L"[VEXOR_DCPolicyOut_0]\nDCPolicyGUID=g1\nDCUser=\nEnableOut0=0\nActionOut0=0\nPolicyIdOut0=\nTypeOut0=0\n"
    L"ItemOut0=i1\nCountOut=1\nPopAlertOut=0\n";

tagVEXORPolicyItem Policy(const wchar_t* id, uint32_t action, bool enable) {
    tagVEXORPolicyItem policy;
    policy.policyId = id;
    policy.action = action;
    policy.enable = enable;
    return policy;
}

TEST(Vexor, SectionsOfTheDocumentAndOfTheMergedPolicies) {
    std::wstring document = kDocument;
    wrb::CustomBmConfig custom;
    custom.policies = {Policy(L"b", 9, false), Policy(L"new", 5, true)};
    const FakeDbService db([&](const DbRequest& request) {
        return request.IsMessage() ? RecordMessage(request.Name(), custom) : WideBytes(document);
    });
    const std::vector<tagVEXORPolicyItem> server = {Policy(L"a", 1, true), Policy(L"b", 2, true),
                                                    Policy(L"A", 0, true)};
    std::wstring out = L"[Before]\n";
    EXPECT_TRUE(cmdhm_GetVexorSetting(out, kUid, server));
    EXPECT_EQ(out, std::wstring(L"[Before]\n") + kPolicies + kSections);
    TakeOwnText();
    for (const auto& [text, ok] : {std::pair(L"", true), std::pair(L"<Policy>", false)}) {
        document = text;
        EXPECT_EQ(cmdhm_GetVexorSetting(out, kUid, server), ok);
    }
    EXPECT_EQ(out, std::wstring(L"[Before]\n") + kPolicies + kSections);
    EXPECT_EQ(
        TakeCapturedLog().back(),
        (CapturedLine{'E', L"cmdhm_GetVexorSetting - the policy document cannot be read: Start-end tags mismatch"}));
}

// What the containers render survives a message.
template <typename Container>
void AppendCopied(std::wstring& out, const Container& container) {
    CSerializer message;
    message << container;
    Container copy;
    copy.m_uid = L"old";
    message >> copy;
    EXPECT_EQ(copy.m_uid, container.m_uid);
    copy.ExportToIni(out);
}

TEST(Vexor, ContainersGoThroughAMessage) {
    wrb::PolicyDocument document = wrb::ReadPolicyDocument(kDocument);
    document.behaviour.m_policies = {Policy(L"p", 1, true)};
    std::wstring out;
    AppendCopied(out, document.behaviour);
    AppendCopied(out, document.applications);
    AppendCopied(out, document.devices);
    EXPECT_EQ(out, std::wstring(L"[VEXOR_BMPolicy]\nCount=1\nPolicyId0=p\nAction0=1\nEnable0=1\n") + kSections);
}

std::wstring Nested(int levels) {
    std::wstring text;
    for (int i = 0; i < levels; ++i) {
        text += L"<Policy>";
    }
    for (int i = 0; i < levels; ++i) {
        text += L"</Policy>";
    }
    return text;
}

TEST(Vexor, DocumentsThatAreRefused) {
    using namespace std::string_literals;
    const std::wstring fits = L"<Policy a='" + std::wstring((1 << 19) - 14, L'x') + L"'/>";
    ASSERT_EQ(fits.size(), 1u << 19);
    for (const std::wstring& text : {Nested(16), fits, L"\n<Policy/>\n<!-- -->"s}) {
        EXPECT_NO_THROW(wrb::ReadPolicyDocument(text)) << text.size();
    }
    const std::wstring refused[] = {L" ",
                                    L"b=1",
                                    L"<Other/>",
                                    L"<Policy/><Policy/>",
                                    L"<Policy/>x",
                                    L"x<Policy/>",
                                    L"<Policy></policy>",
                                    L"<Policy a=1/>",
                                    L"<Policy a='1' a='2'/>",
                                    L"<Policy a='<'/>",
                                    L"<Policy>&</Policy>",
                                    L"<Policy>&own;</Policy>",
                                    L"<Policy a='&#0;'/>",
                                    L"<Policy a='&#xD800;'/>",
                                    L"<Policy a='&#4294967361;'/>",
                                    L"<Policy a='&#;'/>",
                                    L"<Policy>]]></Policy>",
                                    L"<!DOCTYPE Policy><Policy/>",
                                    L"<!DOCTYPE Policy [<!ENTITY own 'x'>]><Policy>&own;</Policy>",
                                    L"<Policy/><?xml version='1.0'?>",
                                    L"<Policy><?xml version='1.0'?></Policy>",
                                    L"<Policy a='\xD800'/>",
                                    L"<Policy>\x01</Policy>",
                                    L"<Policy/>\0"s,
                                    Nested(17),
                                    fits + L"\n"};
    for (const std::wstring& text : refused) {
        EXPECT_THROW(wrb::ReadPolicyDocument(text), wrb::XmlError) << testing::PrintToString(text.substr(0, 80));
    }
}

}  // namespace
