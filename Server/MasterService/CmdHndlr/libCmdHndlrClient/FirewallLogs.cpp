// Firewall logs of agents: the ticket to upload them, the upload itself, and the event counters.
#include "FirewallLogs.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "CmdProtocol.h"
#include "CommandSlot.h"
#include "CounterScope.h"
#include "DbFirewall.h"
#include "DebugLog.h"
#include "FirewallAlert.h"
#include "INICache.h"
#include "UnsignedField.h"
#include "UploadPackage.h"
#include "WrittenHandlers.h"
#include "cmdhl_CfwLogFile.h"
#include "cmdhl_LogTicket.h"
#include "cmdhl_Reply.h"

// Log lines go on naming the module of old.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Others.cpp"

namespace {

constexpr std::size_t kPathCapacity = 260;
constexpr std::size_t kReplyPipePrefix = 17;  // agents of this command put so much in front of what is unique
constexpr uint32_t kFirewallLogs = 1;
constexpr uint32_t kConditionCapacity = 4096;
constexpr wchar_t kSetCfwLog[] = L"cmdhl_SetCFWLog";
constexpr wchar_t kProcessEntry[] = L"cmdhl_ProcessExtractedLog";

// What must not keep the request from going on, above all from cleaning up.
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

// What is given up at the end of a request, whatever became of it.
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

// Right behind a system call: says that it failed.
void CheckDone(BOOL done, const wchar_t* call, const std::wstring& path) {
    if (!done) {
        const DWORD error = GetLastError();
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
    return cmdhl_ProcessExtractedLog(entry, directory, event, context, processCFWLogFile);
}

void AnswerPackageTest(const Upload& upload, const std::wstring& folder) {
    const bool isGood = wrb::TestPackage(upload.fileName, folder);
    wrb::ReplyOrLog(kSetCfwLog, upload.replyPipe, isGood ? L"1" : L"0");
}

void ProcessPackage(Upload& upload, const std::wstring& folder) {
    if (upload.logType != kFirewallLogs) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: unknown log type");
    } else if (!wrb::ExtractPackage(upload.fileName, folder, ProcessFirewallLog, &upload.uid)) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetCFWLog: fpkExtract fail");
    }
}

using NarrowPath = std::array<char, kPathCapacity>;

// Every step is bounded: what does not fit is cut.
NarrowPath EntryPath(const char* directory, const char* entry) noexcept {
    NarrowPath path{};
    std::strncpy(path.data(), directory, path.size() - 1);
    std::strncat(path.data(), "\\", path.size() - 1 - std::strlen(path.data()));
    std::strncat(path.data(), entry, path.size() - 1 - std::strlen(path.data()));
    return path;
}

// Precomposed, which is the default and, where the code page is UTF-8, no flag that may be given.
bool Widen(const NarrowPath& narrow, wchar_t (&path)[kPathCapacity]) noexcept {
    const int characters = MultiByteToWideChar(CP_ACP, 0, narrow.data(), -1, path, static_cast<int>(kPathCapacity));
    path[kPathCapacity - 1] = L'\0';
    return characters > 0;
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
    const wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_PFW_SET_LOG));
    Upload upload = ReadUpload(message);
    const std::wstring folder = wrb::ExtractionDirectory(upload.directory, upload.replyPipe, kReplyPipePrefix);
    // Run in the opposite order: package, folder, ticket.
    const AtEnd freePlace([&] { cmdhl_RemoveClientFromLogUploadingList(upload.uid); });
    CheckDone(CreateDirectoryW(folder.c_str(), nullptr), L"CreateDirectory", folder);  // one that is there does as well
    const AtEnd removeFolder([&] { CheckDone(RemoveDirectoryW(folder.c_str()), L"RemoveDirectory", folder); });
    const AtEnd deletePackage([&] { CheckDone(DeleteFileW(upload.fileName.c_str()), L"DeleteFile", upload.fileName); });
    AnswerPackageTest(upload, folder);
    ProcessPackage(upload, folder);
}

bool cmdhl_ProcessExtractedLog(const char* entry, const char* directory, unsigned event, void* context,
                               ExtractedLogProcessor processor) noexcept {
    if (event != FPK_ENTRY_WRITTEN) {
        return true;
    }
    const NarrowPath narrow = EntryPath(directory, entry);
    wchar_t path[kPathCapacity] = L"";
    const bool hasPath = Widen(narrow, path);
    if (hasPath) {
        Guarded(kProcessEntry, [&] { processor(*static_cast<const std::wstring*>(context), path); });
    } else {
        WRB_LOG(kLogError, L"%s - no wide path for %S", kProcessEntry, narrow.data());
    }
    if (!(hasPath ? DeleteFileW(path) : DeleteFileA(narrow.data()))) {
        const DWORD error = GetLastError();
        // A text shared with another log.
        WRB_LOG(kLogDebug8, L"cmdhl_SetNVLog: DeleteFile(%s) fail err=%d", path, error);
    }
    Guarded(kProcessEntry, [&] { wrb::RemoveEntryFolders(directory, entry); });
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
