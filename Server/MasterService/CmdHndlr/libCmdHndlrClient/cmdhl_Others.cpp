// Firewall logs of agents: the ticket to upload them, the upload itself, and the event counters.
#include "cmdhl_Others.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <exception>

#include "CmdProtocol.h"
#include "CommandSlot.h"
#include "CounterScope.h"
#include "DbFirewall.h"
#include "DebugLog.h"
#include "FirewallAlert.h"
#include "HandlerFrame.h"
#include "INICache.h"
#include "SourceFile.h"
#include "UnsignedField.h"
#include "UploadPackage.h"
#include "cmdhl_CfwLogFile.h"
#include "cmdhl_Handlers.h"
#include "cmdhl_LogTicket.h"
#include "cmdhl_Reply.h"

namespace {

constexpr std::size_t kPathCapacity = 260;
constexpr std::size_t kReplyPipePrefix = 17;  // agents of this command put so much in front of what is unique
constexpr uint32_t kFirewallLogs = 1;
constexpr uint32_t kConditionCapacity = 4096;

// What must not keep the request from going on, above all from cleaning up.
template <typename Step>
void Guarded(const wchar_t* function, Step step) noexcept {
    try {
        step();
    } catch (const std::exception& error) {
        WRB_LOG('E', L"%s - %S", function, error.what());
    }
}

// The three parts of a request that are given up at its end, whatever became of it.
class CTicketPlace {
  public:
    explicit CTicketPlace(const std::wstring& uid) : m_uid(uid) {}
    ~CTicketPlace() {
        Guarded(L"cmdhl_SetCFWLog", [this] { cmdhl_RemoveClientFromLogUploadingList(m_uid); });
    }
    CTicketPlace(const CTicketPlace&) = delete;
    CTicketPlace& operator=(const CTicketPlace&) = delete;

  private:
    const std::wstring& m_uid;
};

class CExtractionFolder {
  public:
    // One that is there already does as well.
    explicit CExtractionFolder(const std::wstring& path) : m_path(path) {
        if (!CreateDirectoryW(path.c_str(), nullptr)) {
            const DWORD error = GetLastError();
            WRB_LOG(8, L"cmdhl_SetCFWLog: CreateDirectory(%s) fail err=%d", path.c_str(), error);
        }
    }
    ~CExtractionFolder() {
        if (!RemoveDirectoryW(m_path.c_str())) {
            const DWORD error = GetLastError();
            WRB_LOG(8, L"cmdhl_SetCFWLog: RemoveDirectory(%s) fail err=%d", m_path.c_str(), error);
        }
    }
    CExtractionFolder(const CExtractionFolder&) = delete;
    CExtractionFolder& operator=(const CExtractionFolder&) = delete;

  private:
    const std::wstring& m_path;
};

class CUploadedPackage {
  public:
    explicit CUploadedPackage(const std::wstring& path) : m_path(path) {}
    ~CUploadedPackage() {
        if (!DeleteFileW(m_path.c_str())) {
            const DWORD error = GetLastError();
            WRB_LOG(8, L"cmdhl_SetCFWLog: DeleteFile(%s) fail err=%d", m_path.c_str(), error);
        }
    }
    CUploadedPackage(const CUploadedPackage&) = delete;
    CUploadedPackage& operator=(const CUploadedPackage&) = delete;

  private:
    const std::wstring& m_path;
};

struct tagUpload {
    std::wstring replyPipe;
    std::wstring uid;
    std::wstring fileName;
    std::wstring directory;
    uint32_t logType = 0;
};

tagUpload ReadUpload(CCmdProtocol& message) {
    tagUpload upload;
    message >> upload.replyPipe >> upload.uid >> upload.fileName >> upload.directory >> upload.logType;
    WRB_LOG(8, L"cmdhl_SetCFWLog: UID=%s, FileName=%s, Dir=%s, nLogType=%d", upload.uid.c_str(),
            upload.fileName.c_str(), upload.directory.c_str(), upload.logType);
    return upload;
}

bool ProcessFirewallLog(const char* entry, const char* directory, unsigned event, void* context) {
    return cmdhl_ProcessExtractedLog(entry, directory, event, context, processCFWLogFile);
}

void AnswerPackageTest(const tagUpload& upload, const std::wstring& folder) {
    const bool isGood = wrb::TestPackage(upload.fileName, folder);
    if (!wrb::Reply(upload.replyPipe.c_str(), isGood ? L"1" : L"0")) {
        WRB_LOG('E', L"%s - cmdhl_OutputCommand failed.", L"cmdhl_SetCFWLog");
    }
}

void ProcessPackage(tagUpload& upload, const std::wstring& folder) {
    if (upload.logType != kFirewallLogs) {
        WRB_LOG(8, L"cmdhl_SetCFWLog: unknown log type");
    } else if (!wrb::ExtractPackage(upload.fileName, folder, ProcessFirewallLog, &upload.uid)) {
        WRB_LOG(8, L"cmdhl_SetCFWLog: fpkExtract fail");
    }
}

// Every step is bounded: what does not fit is cut.
void EntryPath(const char* directory, const char* entry, wchar_t (&path)[kPathCapacity]) noexcept {
    std::array<char, kPathCapacity> narrow{};
    std::strncpy(narrow.data(), directory, narrow.size() - 1);
    std::strncat(narrow.data(), "\\", narrow.size() - 1 - std::strlen(narrow.data()));
    std::strncat(narrow.data(), entry, narrow.size() - 1 - std::strlen(narrow.data()));
    MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, narrow.data(), -1, path, static_cast<int>(kPathCapacity));
    path[kPathCapacity - 1] = L'\0';
}

bool GetQueryCondition(std::wstring& output, const wchar_t* uid, bool /*there is no "changed" bit*/) {
    int32_t waitingSeconds = 0;
    cmdhl_RequestToUploadPFWLog(uid, waitingSeconds);
    wchar_t condition[kConditionCapacity] = L"";
    ServerIniCache().readINIString(condition, L"INI_SERVER_SECTION", L"CFWLogQueryCondition", L"", kConditionCapacity);
    CCmdProtocol answer;
    answer << 1 << waitingSeconds << condition;
    output = answer.Text();
    return true;
}

}  // namespace

void cmdhl_GetPFWLogQueryCondition(CCmdProtocol& message) {
    wrb::AnswerCommand({wrb::CommandSlot::CMDHL_PFW_GET_LOG_QUERY_CONDITION, GetQueryCondition,
                        L"cmdhl_GetPFWLogQueryCondition: uid:[%s]", L"cmdhl_GetPFWLogQueryCondition: output:[%s]",
                        WRB_SOURCE_FILE, __LINE__, L"cmdhl_GetPFWLogQueryCondition - cmdhl_OutputCommand failed."},
                       message);
}

void cmdhl_SetCFWLog(CCmdProtocol& message) {
    const wrb::CCounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_SET_LOG));
    tagUpload upload = ReadUpload(message);
    const std::wstring folder = wrb::ExtractionDirectory(upload.directory, upload.replyPipe, kReplyPipePrefix);
    // Given up in the opposite order: package, folder, ticket.
    const CTicketPlace ticket(upload.uid);
    const CExtractionFolder extractionFolder(folder);
    const CUploadedPackage package(upload.fileName);
    AnswerPackageTest(upload, folder);
    ProcessPackage(upload, folder);
}

bool cmdhl_ProcessExtractedLog(const char* entry, const char* directory, unsigned event, void* context,
                               ExtractedLogProcessor processor) noexcept {
    if (event != FPK_ENTRY_WRITTEN) {
        return true;
    }
    wchar_t path[kPathCapacity] = L"";
    EntryPath(directory, entry, path);
    Guarded(L"cmdhl_ProcessExtractedLog", [&] { processor(*static_cast<const std::wstring*>(context), path); });
    if (!DeleteFileW(path)) {
        const DWORD error = GetLastError();
        WRB_LOG(8, L"cmdhl_SetNVLog: DeleteFile(%s) fail err=%d", path, error);  // a text shared with another log
    }
    Guarded(L"cmdhl_ProcessExtractedLog", [&] { wrb::RemoveEntryFolders(directory, entry); });
    return true;
}

void cmdhl_UpdateCfwCount(CCmdProtocol& message) {
    wrb::CCounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_UPDATE_CFW_COUNT));
    std::wstring uid;
    uint32_t number = 0;
    message >> uid >> number;
    std::array<uint32_t, 6> counters{};
    for (uint32_t& counter : counters) {
        counter = wrb::TakeUnsigned(message);
    }
    std::wstring timeStamp;
    uint32_t alert = 0;
    message >> timeStamp >> alert;
    WRB_LOG(8, L"cmdhl_UpdateCfwCount:uid='%s'", uid.c_str());
    WRB_LOG(8, L"cmdhl_UpdateCfwCount: InsertOneLog");
    if (alert != 0) {
        InsertOneLog(counters[1], counters[0], counters[2], timeStamp.c_str());
    }
    const bool isStored = dbSetCfwLogCountW(uid.c_str(), static_cast<int32_t>(number), counters, timeStamp.c_str());
    call.ReportResult(isStored);
    if (!isStored) {
        WRB_LOG(8, L"cmdhl_UpdateCfwCount:uid='%s' fail", uid.c_str());
    }
}
