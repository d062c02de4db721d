#include "FakeLogService.h"

#include "CmdProtocol.h"
#include "DebugLog.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

constexpr uint32_t kLevelBeyondFilter = 256;

tagLogMessage Parse(const std::wstring& text) {
    CCmdProtocol message(text.c_str());
    tagLogMessage result;
    uint32_t seconds = 0;
    message >> result.command >> seconds >> result.process >> result.thread >> result.level >> result.sourceFile >>
        result.line;
    result.seconds = static_cast<int32_t>(seconds);
    // The text is the rest of the message: it may hold TABs of its own.
    std::wstring field;
    for (const wchar_t* separator = L""; !message.AtEnd(); separator = L"\t") {
        message >> field;
        result.text += separator + field;
    }
    return result;
}

}  // namespace

CFakeLogService::CFakeLogService(const char* moduleTag) : m_pipe(L"Log_ServerNamePipe") {
    DebugLogSetup(L"", L"", moduleTag, true);
}

CFakeLogService::~CFakeLogService() {
    DebugLogSetup(L"", L"", "", false);
}

std::vector<tagLogMessage> CFakeLogService::TakeLines() {
    // A line of this thread reaches the service only after all that this thread wrote before it has been served.
    const std::wstring mark = UniqueName(L"mark");
    DebugLog(kLevelBeyondFilter, L"", 0, L"%s", mark.c_str());
    std::vector<tagLogMessage> lines;
    for (;;) {
        const std::vector<tagReceived> received = m_pipe.WaitFor(m_taken + 1);
        if (received.size() == m_taken) {
            return lines;  // the mark was lost: the test sees what came before it
        }
        while (m_taken < received.size()) {
            lines.push_back(Parse(received[m_taken++].Text()));
            if (lines.back().text.find(mark) != std::wstring::npos) {
                lines.pop_back();
                return lines;
            }
        }
    }
}

std::vector<std::wstring> CFakeLogService::TakeTexts() {
    std::vector<std::wstring> texts;
    for (const tagLogMessage& line : TakeLines()) {
        const std::size_t program = line.text.find(L"][");
        const std::size_t end = program == std::wstring::npos ? program : line.text.find(L']', program + 2);
        texts.push_back(end == std::wstring::npos ? line.text : line.text.substr(end + 1));
    }
    return texts;
}

}  // namespace wrb::test
