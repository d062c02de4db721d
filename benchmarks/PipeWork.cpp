#include "PipeWork.h"

#include <windows.h>

#include <string>
#include <string_view>

#include "BarePipe.h"
#include "Compiler.h"
#include "PipeFixture.h"
#include "PipePath.h"
#include "SampleAgent.h"
#include "cmdhl.h"

namespace wrb::bench {
namespace {

constexpr wchar_t kExtensions[] = L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386";

bool Process(const std::wstring& message) {
    return cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)) == 1;
}

std::string Bytes(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::wstring ToSink(const wchar_t* command) {
    return std::wstring(command) + L"\t" + kSinkPipe + L"\t";
}

// A write to the database: nobody answers it.
std::string Write(const wchar_t* command, const std::wstring& fields) {
    return DatabaseRequest(std::wstring(command) + L"\t-1\t" + kSampleUid + L"\t" + fields);
}

// Unique a thread and a call, as the product's reply ids are.
std::wstring NextReplyId() {
    WRB_THREAD_LOCAL uint32_t calls = 0;
    return std::to_wstring(static_cast<int32_t>((GetCurrentThreadId() & 0xFFFF) << 16 | (++calls & 0xFFFF)));
}

bool BareAsk(const wchar_t* command, const wchar_t* number) {
    const std::wstring id = NextReplyId();
    const std::wstring request = std::wstring(command) + L"\t" + id + L"\t" + kSampleUid + L"\t" + number;
    return BareExchange(kDbPipe, DatabaseRequest(request), L"DbCln_" + id);
}

const std::wstring& Content() {
    static const std::wstring content(200, L'x');
    return content;
}

}  // namespace

bool Echo() {
    static const std::wstring message = ToSink(L"CMDHL_ECHO") + Content();
    return Process(message);
}

bool BareEcho() {
    static const std::string content = Bytes(Content());
    return BareSend(kSinkPipe, content);
}

bool GetServerScan() {
    static const std::wstring message = ToSink(L"CMDHL_GET_MS_CFG");
    return Process(message);
}

bool BareReply() {
    static const std::string reply(1400, 'x');
    return BareSend(kSinkPipe, reply, kPipePieceBytes);
}

bool GetManualScan() {
    static const std::wstring message = ToSink(L"CMDHL_GET_MS_CFG") + kSampleUid;
    return Process(message);
}

bool FiveConnections() {
    return BareAsk(L"DB_GET_MSCF", L"0") && BareAsk(L"DB_GET_EXTRA", L"1") && BareReply();
}

bool SetManualScan() {
    static const std::wstring message = std::wstring(L"CMDHL_SET_MS_CFG\t") + kSampleUid +
                                        L"\t1\t0\t0\t0\t1\t1\t1\t20\t1\t3\t0\t4\t0\t1\t1\t" + kExtensions +
                                        L"\t1\t1\t\\temp\t\\temp\t1\t1\tUniverse-5-4\t0\t2\t1";
    return Process(message);
}

bool TwoMessages() {
    static const std::string settings = Write(L"DB_SET_MSCF", std::wstring(L"554175997\t4294901757\t20\t3\t4\t") +
                                                                  kExtensions + L"\t\\temp\tUniverse-5-4\t0");
    static const std::string changed = Write(L"DB_SET_CONF_FLAG", L"1\t0\t0");
    return BareSend(kDbPipe, settings) && BareSend(kDbPipe, changed);
}

bool GetAllSettings() {
    static const std::wstring message = ToSink(L"CMDHL_GET_CLIENT_ALL_SETTING") + kSampleUid;
    return Process(message);
}

bool GetTheirParts() {
    static const wchar_t* const kParts[] = {L"CMDHL_GET_ALL_SCAN_CFG",
                                            L"CMDHL_GET_WTP_SETTING",
                                            L"CMDHL_GET_FA_RESTORE_SETTING",
                                            L"CMDHL_GET_NCIE_SETTING",
                                            L"CMDHL_GET_SAMPLE_SUBMISSION_SETTING",
                                            L"CMDHL_GET_SABLEX_SETTING",
                                            L"CMDHL_GET_SERVER_POLICY",
                                            L"CMDHL_GET_INI_SERVICESWITCHSETTING",
                                            L"CMDHL_GET_SCAN_METHOD",
                                            L"CMDHL_GET_INI_WHITELIST",
                                            L"CMDHL_GET_INI_VEXORSETTING",
                                            L"CMDHL_GET_INI_CRITICAL",
                                            L"CMDHL_GET_INI_COMPONENT_VER",
                                            L"CMDHL_GET_INI_GLOBALSETTING"};
    for (const wchar_t* const part : kParts) {
        if (!Process(ToSink(part) + kSampleUid)) {
            return false;
        }
    }
    return true;
}

bool CountFirewall() {
    static const std::wstring message =
        std::wstring(L"CMDHL_PFW_UPDATE_CFW_COUNT\t") + kSampleUid + L"\t1\t1\t2\t3\t4\t5\t6\t20260101120000\t0";
    return Process(message);
}

bool OneMessage() {
    static const std::string counts = Write(L"DB_SET_CFW_LOGCOUNT", L"1\t1\t2\t3\t4\t5\t6\t20260101120000\t0");
    return BareSend(kDbPipe, counts);
}

}  // namespace wrb::bench
