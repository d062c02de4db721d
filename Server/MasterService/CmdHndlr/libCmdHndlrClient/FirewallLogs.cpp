// Firewall logs of agents: the ticket to upload them, the upload itself, and the event counters.
#include "FirewallLogs.h"

#include <windows.h>

#include <array>
#include <exception>
#include <string>
#include <utility>

#include "CancelAfter.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DbAgent.h"
#include "DebugLog.h"
#include "FirewallAlert.h"
#include "INICache.h"
#include "Text.h"
#include "UndeliveredReport.h"
#include "UploadPackage.h"
#include "cmdhl_CfwLogFile.h"
#include "cmdhl_LogTicket.h"
#include "cmdhl_Reply.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Others.cpp"

namespace {

constexpr std::size_t kLongestEntryPath = 259;
constexpr std::size_t kReplyPipePrefix = 17;  // the part that agents put in front of the unique one
constexpr uint32_t kFirewallLogs = 1;
constexpr uint32_t kConditionCapacity = 4096;
constexpr wchar_t kSetCfwLog[] = L"cmdhl_SetCFWLog";
constexpr wchar_t kProcessEntry[] = L"cmdhl_ProcessExtractedLog";

// Runs a step whose failure must not keep the request from cleaning up.
template <typename Step>
void Guarded(const wchar_t* function, Step step) noexcept {
    try {
        step();
    } catch (const std::exception& error) {
        WRB_LOG(kLogError, L"%s - %S", function, error.what());
    } catch (...) {
        WRB_LOG(kLogError, L"%s - unknown exception", function);
    }
}

// Runs a step at the end of the request, also after an exception.
template <typename Step>
class AtEnd {
  public:
    explicit AtEnd(Step step) : m_step(std::move(step)) {}
    ~AtEnd() { Guarded(kSetCfwLog, m_step); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

  private:
    Step m_step;
};

void LogFailure(DWORD error, const wchar_t* call, const std::wstring& path) {
    if (error != ERROR_SUCCESS) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: %s(%s) fail err=%d", call, path.c_str(), error);
    }
}

struct Upload {
    std::wstring replyPipe;
    std::wstring uid;
    std::wstring fileName;
    std::wstring directory;
    uint32_t logType = 0;
};

Upload ReadUpload(CCmdProtocol& message) {
    Upload upload;
    message >> upload.replyPipe >> upload.uid >> upload.fileName >> upload.directory >> upload.logType;
    WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: UID=%s, FileName=%s, Dir=%s, nLogType=%d", upload.uid.c_str(),
            upload.fileName.c_str(), upload.directory.c_str(), upload.logType);
    return upload;
}

bool ProcessFirewallLog(const char* entry, const char* directory, unsigned event, void* context) {
    wrb::CfwUpload& records = *static_cast<wrb::CfwUpload*>(context);
    std::wstring uid = records.Uid();
    return cmdhl_ProcessExtractedLog(entry, directory, event, &uid, [&records](auto& agent, auto* fileName) {
        return processCFWLogFile(agent, fileName, records);
    });
}

// False when it was to be unpacked and could not.
bool ProcessPackage(const Upload& upload, const wrb::UploadPackage& package, wrb::CfwUpload& records) {
    if (upload.logType != kFirewallLogs) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: unknown log type");
    } else if (!package.Unpack(ProcessFirewallLog, &records)) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: fpkExtract fail");
        return false;
    }
    return true;
}

// Cut at the length of the package library's own paths.
std::wstring EntryPath(const char* directory, const char* entry) {
    return wrb::AnsiToWide((std::string(directory) + "\\" + entry).substr(0, kLongestEntryPath));
}

void ProcessEntry(const char* entry, const char* directory, const std::wstring& uid,
                  const ExtractedLogProcessor& processor) {
    const std::wstring path = EntryPath(directory, entry);
    Guarded(kProcessEntry, [&] { processor(uid, path.c_str()); });
    const wrb::CancelAfter limit(wrb::kUploadFileMilliseconds);
    if (!DeleteFileW(path.c_str())) {
        const DWORD error = GetLastError();
        // Another log has the same text.
        WRB_LOG(kLogDebug8, L"cmdhl_SetNVLog: DeleteFile(%s) fail err=%d", path.c_str(), error);
    }
    wrb::RemoveEntryFolders(directory, entry);
}

}  // namespace

bool wrb::GetPfwLogQueryCondition(std::wstring& output, const wchar_t* uid) {
    int32_t waitingSeconds = 0;
    cmdhl_RequestToUploadPFWLog(uid, waitingSeconds);
    wchar_t condition[kConditionCapacity] = L"";
    ServerIniCache().readINIString(condition, L"INI_SERVER_SECTION", L"CFWLogQueryCondition", L"", kConditionCapacity);
    CCmdProtocol answer;
    answer << 1 << waitingSeconds << condition;
    output = answer.Text();
    return true;
}

void cmdhl_SetCFWLog(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_SET_LOG));
    const Upload upload = ReadUpload(message);
    const std::wstring folder = wrb::ExtractionDirectory(upload.directory, upload.replyPipe, kReplyPipePrefix);
    // These run in reverse order: package, folder, ticket.
    const AtEnd freePlace([&] { cmdhl_RemoveClientFromLogUploadingList(upload.uid); });
    wrb::UploadPackage package(kSetCfwLog, upload.fileName, folder);
    if (package.IsRefused()) {
        wrb::ReplyOrLog(kSetCfwLog, upload.replyPipe, L"0");
        return;
    }
    LogFailure(package.FolderError(), L"CreateDirectory", folder);  // may exist already
    const AtEnd removeFolder([&] { LogFailure(package.RemoveFolder(), L"RemoveDirectory", folder); });
    const AtEnd deletePackage([&] { LogFailure(package.Delete(), L"DeleteFile", upload.fileName); });
    const bool isGood = package.Test();
    wrb::ReplyOrLog(kSetCfwLog, upload.replyPipe, isGood ? L"1" : L"0");
    wrb::CfwUpload records(upload.uid);
    const AtEnd report([&] { wrb::ReportUndelivered(call, kSetCfwLog, upload.uid, records.lost); });
    if (!ProcessPackage(upload, package, records) && isGood) {
        call.ReportResult(false);
        WRB_LOG(kLogError, L"%s - not handed over: a package that was answered 1, uid=%s", kSetCfwLog,
                upload.uid.c_str());
    }
}

bool cmdhl_ProcessExtractedLog(const char* entry, const char* directory, unsigned event, void* context,
                               const ExtractedLogProcessor& processor) noexcept {
    if (event == FPK_ENTRY_WRITTEN) {
        Guarded(kProcessEntry,
                [&] { ProcessEntry(entry, directory, *static_cast<const std::wstring*>(context), processor); });
    }
    return true;
}

void cmdhl_UpdateCfwCount(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_UPDATE_CFW_COUNT));
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
    WRB_LOG(kLogDebug8, L"cmdhl_UpdateCfwCount:uid='%s'", uid.c_str());
    WRB_LOG(kLogDebug8, L"cmdhl_UpdateCfwCount: InsertOneLog");
    if (alert != 0) {
        InsertOneLog(counters[1], counters[0], counters[2], timeStamp.c_str());
    }
    const bool isStored = dbSetCfwLogCountW(uid.c_str(), static_cast<int32_t>(number), counters, timeStamp.c_str());
    call.ReportResult(isStored);
    if (!isStored) {
        WRB_LOG(kLogDebug8, L"cmdhl_UpdateCfwCount:uid='%s' fail", uid.c_str());
    }
}
