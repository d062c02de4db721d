#include "logcl_command.h"

#include <windows.h>

#include <atomic>

#include "CmdProtocol.h"
#include "Deadline.h"
#include "DebugLog.h"
#include "LastError.h"
#include "PipeClient.h"
#include "ServicePipes.h"
#include "Text.h"

namespace {

std::atomic<bool> missingServiceReported{false};

void Report(const wrb::IExternalLog* external, uint32_t line, const wchar_t* format, DWORD error) {
    const wrb::KeepLastError keep;
    if (external != nullptr) {
        external->Trace(WRB_SOURCE_FILE, line, kLogError, wrb::FormatWide(format, error).c_str());
    }
}

void ReportConnectFailure(const wrb::IExternalLog* external, DWORD error) {
    if (error != ERROR_FILE_NOT_FOUND) {
        Report(external, __LINE__, L"Initial pipe client failed! err=%d", error);
    } else if (external != nullptr && !missingServiceReported.exchange(true)) {
        Report(external, __LINE__, L"Need to Start LogServer for turn on debug log.", error);
    }
}

}  // namespace

int logcl_Write(const wrb::LogLine& line, const wrb::IExternalLog* external, uint32_t milliseconds) {
    const wrb::Deadline deadline(milliseconds);
    CPipeClient client;
    if (!client.Initial(wrb::kLogServicePipe, milliseconds)) {
        ReportConnectFailure(external, GetLastError());
        return 0;
    }
    CCmdProtocol message;
    message << kLogWriteCommand << line.seconds << line.process << line.thread << line.level << line.sourceFile
            << static_cast<int32_t>(line.line) << line.text;
    uint64_t bytes = (message.Text().size() + 1) * sizeof(wchar_t);
    client.LimitSend(deadline.Remaining());
    if (!client.Send(message.Text().data(), bytes)) {
        Report(external, __LINE__, L"pipe send failed!. err=%d", GetLastError());
        return 0;
    }
    return 1;
}
