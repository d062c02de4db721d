// What agents report about spyware: packages of logs and of backup manifests, results of restores, status flags.
#include <windows.h>

#include <string>

#include "AgentUid.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DbAgent.h"
#include "DebugLog.h"
#include "Text.h"
#include "UndeliveredReport.h"
#include "UploadPackage.h"
#include "WrbClient.h"
#include "cmdhl_Reply.h"
#include "cmdhl_SpywareLogDir.h"
#include "cmdlog_OutputCmd.h"

namespace {

constexpr wchar_t kRestoreLog[] = L"cmdhl_SetSpywareRestoreLog";

struct SpywareUpload {
    wrb::CommandSlot slot;
    const wchar_t* name;          // of the handler, in its log lines
    std::size_t replyPipePrefix;  // the part that agents put in front of the unique one
    bool isLog;                   // its entries go into the feedback log
    int32_t event;
    const wchar_t* successAnswer;
};

// A manifest is answered 0 whatever came of it.
constexpr SpywareUpload kSpywareLog = {
    wrb::CommandSlot::CMDHL_SET_SPYWARELOG, L"cmdhl_SetSpywareLog", 20, true, 0, L"1"};
constexpr SpywareUpload kBackupManifest = {
    wrb::CommandSlot::CMDHL_SET_SPYWARE_BACKUP_MANIFEST, L"cmdhl_SetSpywareBackupManifest", 33, false, 2, L"0"};

// Unlike the firewall log's, the folder stays after the request: one that exists belongs to another.
bool IsNew(const SpywareUpload& kind, const wrb::UploadPackage& package, const std::wstring& folder) {
    if (package.FolderError() == ERROR_SUCCESS) {
        return true;
    }
    WRB_LOG(kLogDebug8, L"%s: CreateDirectory(%s) fail err=%d", kind.name, folder.c_str(), package.FolderError());
    return false;
}

bool Unpack(const SpywareUpload& kind, const wrb::UploadPackage& package) {
    if (package.Unpack(nullptr, nullptr)) {
        return true;
    }
    WRB_LOG(kLogDebug8, L"%s: fpkExtract fail.", kind.name);
    return false;
}

void TakeUpload(const SpywareUpload& kind, CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(kind.slot));
    std::wstring replyPipe;
    std::wstring uid;
    std::wstring fileName;
    std::wstring base;
    message >> replyPipe >> uid >> fileName >> base;
    WRB_LOG(kLogDebug8, L"%s: UID=%s, FileName=%s, Dir=%s", kind.name, uid.c_str(), fileName.c_str(), base.c_str());
    const std::wstring folder = wrb::ExtractionDirectory(base, replyPipe, kind.replyPipePrefix);
    wrb::UploadPackage package(kind.name, fileName, folder);
    if (package.IsRefused()) {
        wrb::ReplyOrLog(kind.name, replyPipe, L"0");
        return;
    }
    const bool isNew = IsNew(kind, package, folder);
    if (!isNew || !Unpack(kind, package)) {
        wrb::ReplyOrLog(kind.name, replyPipe, L"0");
        package.Delete();
        if (isNew) {
            package.RemoveFolder();
        }
        return;
    }
    package.CloseFolder();
    wrb::Undelivered lost;
    if (kind.isLog) {
        cmdhl_ScanSpywareLogDir(wrb::WideToAnsi(package.Folder()).c_str(), &lost);
    }
    lost.events = wrbSetSpywareLogEvent(kind.event) == 1 ? 0 : 1;
    wrb::ReplyOrLog(kind.name, replyPipe, kind.successAnswer);
    wrb::ReportUndelivered(call, kind.name, uid, lost);
    if (const DWORD error = package.Delete(); error != ERROR_SUCCESS) {
        WRB_LOG(kLogDebug8, L"%s: DeleteFile(%s) fail err=%d", kind.name, fileName.c_str(), error);
    }
}

}  // namespace

void cmdhl_SetSpywareLog(CCmdProtocol& message) {
    TakeUpload(kSpywareLog, message);
}

void cmdhl_SetSpywareBackupManifest(CCmdProtocol& message) {
    TakeUpload(kBackupManifest, message);
}

void cmdhl_SetSpywareRestoreLog(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_SET_SPYWARE_RESTORE_LOG));
    std::wstring replyPipe;
    std::wstring uid;
    uint32_t first = 0;
    uint32_t second = 0;
    message >> replyPipe >> uid >> first >> second;
    // The row has them in reverse order.
    const bool isSent = dbSetRestoreLogW(uid.c_str(), static_cast<int32_t>(second), static_cast<int32_t>(first)) == 1;
    wrb::ReplyOrLog(kRestoreLog, replyPipe, L"1");
    wrb::ReportUndelivered(call, kRestoreLog, uid, {.rows = isSent ? 0u : 1u});
}

void cmdhl_SetStatusFlag(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_SET_STATFLAG));
    std::wstring uid;
    message >> uid;
    const uint32_t word1 = wrb::TakeUnsigned(message);
    const uint32_t word2 = wrb::TakeUnsigned(message);
    if (uid.size() != wrb::kUidCharacters) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetStatusFlag:Uid length incorrent");
        call.ReportResult(false);
        return;
    }
    const bool isStored = dbSetStatusW(uid.c_str(), word1, word2, 0);
    if (!isStored) {
        WRB_LOG(kLogDebug8, L"cmdhl_SetStatusFlag:dbSetStatus fail %s, %x,%x", uid.c_str(), word1, word2);
    }
    call.ReportResult(isStored);
}
