#include "BackEnd.h"

#include <cstdlib>
#include <stdexcept>

#include "PipeClient.h"
#include "Text.h"

namespace wrb::test {
namespace {

constexpr char kFull[] = R"({"uid": "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3", "computer": "RECEPTION-01",
    "ip": "192.0.2.17", "domain": {"name": "Front", "path": "Company\\Front", "uid": "d-1"},
    "programVersion": "14.0", "platform": 10, "architecture": 9, "status": {"word1": 5, "word2": "0x80000001"},
    "changed": 7, "scanMethod": 1, "privilege": {"word1": 3, "word2": "0xFFFFFFFF"},
    "passwords": {"uninstall": "un", "unload": "ul"}, "outbreakPrevention": {"status": 1, "end": 4000000000},
    "behaviourText": "<Policy/>", "behaviourPolicies": [{"id": "p0", "action": 2, "enable": true},
    {"id": "p1", "action": 1, "enable": false}], "approvedSpyware": ["one", "two"],
    "restoreSessions": ["s 1", "s 2", "s 3"],
    "webThreat": {"EnablePolicyIn": true, "SecurityLevelIn": 1, "SecurityLevelOut": 2, "SendLogOut": true,
    "URLFilterCfgFlag_InOffice": 3, "URLFilterCfgFlag_OutOffice": 4, "URLFilterQueryMode_InOffice": 5,
    "URLFilterRatingLevel_InOffice": 6, "URLFilterRatingLevel_OutOffice": -1,
    "URLFilterAWSL_InOffice": ["http://\u00e4/", "b"], "URLFilterAWSL_OutOffice": ["c"],
    "URLFilterBlackList_InOffice": ["d"]}, "ncie": {"EnableCNP": true, "ActionForCNP": 1, "ActionForRR": 2,
    "ActionForUserDefine": 3, "ActionForSBA": 4}, "sablex": {"EnableProcess": true,
    "ActionForFile": 1, "ActionForProcess": 2, "ExceptionItem": ["C:\\a.exe", "b"], "DS_ProcessName": ["p.exe"]},
    "aggrScan": {"EnableMitre": true, "AggreDetectFlag": 7, "AggreDetectFlagForIProduct": "0x80000000"},
    "restoreItems": [{"FASha1Hash": "h0", "FATaskId": "t0", "FAItemId": "i0", "FAFileDir": "C:\\d 0",
    "FAFileName": "n0"}, {"FASha1Hash": "h1"}], "agentPolicies": [{"Name": "Base", "LastUpdateTime": "2024",
    "PolicyOwner": "me", "PolicyTypeID": "12"}], "scan": {"manual": {"Flags": 33, "MoveDir": "\\m",
    "exclusions": {"ExcludedExt": "iso"}}}})";

std::string SeedText() {
    std::string text = std::string("{\"agents\": [") + kFull;
    for (unsigned i = 0; i < 8; ++i) {
        text += R"(, {"uid": ")" + WideToUtf8(ThreadAgent(i)) + R"(", "scan": {}})";
    }
    return text + "], \"serviceSwitch\": {\"EnableDLPOnServer\": false}}";
}

}  // namespace

std::wstring ThreadAgent(unsigned thread) {
    return FormatWide(L"00000000-0000-0000-0000-%012u", thread);
}

void SendBytes(const wchar_t* pipe, const std::string& bytes) {
    CPipeClient client;
    ASSERT_TRUE(client.Initial(pipe)) << GetLastError();
    uint64_t count = bytes.size();
    client.Send(bytes.data(), count);
}

std::string BytesOf(const CSerializer& message) {
    return {reinterpret_cast<const char*>(message.Data()), message.GetSize()};
}

BackEnd::BackEnd(std::vector<std::wstring> moreArguments) {
    const std::filesystem::path more = m_folder / L"agents.json";
    WriteAll(more, SeedText());
    for (const std::wstring& file : {ProgramFolder() + L"sample-agents.json", more.wstring()}) {
        ExpectRun(kBackEnd, {L"seed", file, L"--db", Database()}, 0);
    }
    std::vector<std::wstring> arguments = {L"serve", L"--db", Database(), L"--log-folder",
                                           (m_folder / L"log").wstring()};
    arguments.insert(arguments.end(), moreArguments.begin(), moreArguments.end());
    m_process = std::make_unique<ChildProcess>(kBackEnd, arguments);
    if (!m_process->WaitForOutput("wrbback: ready")) {
        throw std::runtime_error(m_process->Output());
    }
}

BackEnd::~BackEnd() {
    if (m_process) {
        Stop();
    }
}

std::string BackEnd::Stop() {
    ExpectRun(kBackEnd, {L"stop"}, 0);
    EXPECT_EQ(m_process->WaitForExit(), 0u);
    std::string output = m_process->Output();
    m_process.reset();
    return output;
}

void BackEnd::WaitForFault() const {
    while (ExpectRun(L"wrbctl.exe", {L"fault"}, 0).find("applied 1 times") == std::string::npos) {
    }
}

void BackEnd::Kill() {
    TerminateProcess(m_process->Handle(), 9);
    EXPECT_EQ(m_process->WaitForExit(), 9u);
    m_process.reset();
}

std::wstring BackEnd::Database() const {
    const wchar_t* const store = _wgetenv(L"WRB_TEST_STORE");
    return store != nullptr ? store : (m_folder / L"agents.db").wstring();
}

bool BackEnd::WaitForLog(const std::string& part) const {
    for (int i = 0; i < 2000 && Log().find(part) == std::string::npos; ++i) {
        Sleep(10);
    }
    return Log().find(part) != std::string::npos;
}

}  // namespace wrb::test
