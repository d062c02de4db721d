// The setting bundles, from the database to the sections that agents get.

#include <fstream>

#include "BackEnd.h"
#include "DbAgent.h"
#include "INICache.h"
#include "StringProtection.h"
#include "cmdhm_Bundles.h"

namespace wrb::test {
namespace {

constexpr wchar_t kKey[] = L"00112233445566778899aabbccddeeff0123456789abcdeffedcba9876543210";

// The text with every protected value in the clear.
std::wstring Clear(std::wstring text) {
    const StringProtection protection(*ParseProtectionKey(kKey));
    for (std::size_t at = text.find(L"!CRYPT!"); at != text.npos; at = text.find(L"!CRYPT!", at + 1)) {
        const std::size_t length = text.find(L'\n', at) - at;
        text.replace(at, length, L"*" + protection.Unprotect(text.substr(at, length)).value_or(L"unreadable"));
    }
    return text;
}

struct Case {
    bool (*get)(std::wstring& out, const wchar_t* uid);
    const wchar_t* text;
};

constexpr Case kCases[] = {
    {[](std::wstring& out, const wchar_t* uid) { return cmdhm_GetWtpSetting(out, uid, true); },
     L"[Web Threat "
     L"Protection]\nEnablePolicyIn=1\nEnablePolicyOut=0\nSecurityLevelIn=1\nSecurityLevelOut=2\nSendLogIn=0\n"
     L"SendLogOut=1\nURLFilterCfgFlag_InOffice=3\nURLFilterCfgFlag_OutOffice=4\nURLFilterQueryMode_InOffice=5\n"
     L"URLFilterRatingLevel_InOffice=6\nURLFilterRatingLevel_OutOffice=-1\nURLFilterAWSL_InOffice000=*http://\u00e4/\n"
     L"URLFilterAWSL_InOffice001=*b\nURLFilterAWSLCount_InOffice=2\nURLFilterAWSL_OutOffice000=*c\n"
     L"URLFilterAWSLCount_OutOffice=1\nURLFilterBlackList_InOffice000=*d\nURLFilterBlackListCount_InOffice=1\n"
     L"URLFilterBlackListCount_OutOffice=0\n"},
    {[](std::wstring& out, const wchar_t* uid) { return cmdhm_GetFARestoreSetting(out, uid, true); },
     L"[Centralized FA Restore]\nFACount=2\nFASha1Hash_0=h0\nFATaskId_0=t0\nFAItemId_0=i0\nFAFileDir_0=C:\\d 0\n"
     L"FAFileName_0=n0\nFASha1Hash_1=h1\nFATaskId_1=\nFAItemId_1=\nFAFileDir_1=\nFAFileName_1=\n"},
    {cmdhm_GetNCIESetting,
     L"[NCIE Settings]\nEnableRR=0\nEnableCNP=1\nEnableGC=0\nActionForCNP=1\nActionForRR=2\nActionForUserDefine=3\n"
     L"ActionForSBA=4\n"},
    {cmdhm_GetSampleSubmissionSetting, L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=1\n"},
    {cmdhm_GetSablexSetting,
     L"[Sablex_Settings]\nEnableSablex=0\nEnableFile=0\nEnableProcess=1\nActionForFile=1\nActionForProcess=2\n"
     L"ExceptionCount=2\nExceptionItem000=C:\\a.exe\nExceptionItem001=b\nDS_ProcessCount=1\nDS_ProcessName000=p.exe\n"},
    {cmdhm_GetAggrScanSetting,
     L"[AggrScan Settings]\nEnableMitre=1\nAggreDetectFlag=7\nAggreDetectFlagForIProduct=-2147483648\n"},
    {cmdhm_GetQMAgentPolicyInfo,
     L"[QM_AGENT_POLICY]\nPolicyCount=1\nQMAPolicy0_Name=Base\nQMAPolicy0_LastUpdateTime=2024\nQMAPolicy0_PolicyOwner="
     L"me\n"
     L"QMAPolicy0_PolicyTypeID=12\n"},
};

TEST(BackBundles, EverySectionOfEveryAgent) {
    const BackEnd backEnd;
    const TempFolder folder;
    const std::filesystem::path ini = folder / L"server.ini";
    std::ofstream(ini) << "[INI_SERVER_SECTION]\nStringProtectionKey=" << std::string(kKey, std::end(kKey) - 1) << "\n";
    ServerIniCache().clear();
    ServerIniCache().init(ini.wstring().c_str(), 6);
    ASSERT_TRUE(dbSetConfFlagW(kFullAgent, 0xFFFFFFFF, 0));
    for (const Case& one : kCases) {
        SCOPED_TRACE(testing::Message() << std::wstring(one.text));
        std::wstring out;
        EXPECT_TRUE(one.get(out, kFullAgent));
        EXPECT_EQ(Clear(out), one.text);
        out.clear();
        EXPECT_TRUE(one.get(out, kBareAgent));
        EXPECT_EQ(out.find_first_of(L"123456789*"), out.npos) << "nothing is set";
        out.clear();
        EXPECT_FALSE(one.get(out, kUnknownAgent));
        EXPECT_EQ(out, L"");
    }
    uint32_t changed = 0;
    EXPECT_TRUE(dbGetConfFlagW(kFullAgent, changed, 0));
    EXPECT_EQ(changed, 0xFFFFFFFF & ~0x60000u);
}

}  // namespace
}  // namespace wrb::test
