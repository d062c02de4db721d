#include "cmdhl_CfwLogFile.h"

#include <windows.h>

#include <cwchar>

#include "CancelAfter.h"
#include "CheckPFWLogVersion.h"
#include "DebugLog.h"
#include "Handle.h"
#include "INICache.h"
#include "PfwLogReader.h"
#include "PfwLogText.h"
#include "UploadFile.h"

namespace wrb {
namespace {

constexpr int32_t kForwarded = 1;
constexpr int32_t kRecordLost = -2;
constexpr uint8_t kGuardedDirection = 2;  // its process paths are sent only with CFWShowAllPV
constexpr uint16_t kFirewallLog = 0;

// The line shows the function and the module only: the format has one place, so the other arguments are not printed.
// People search the logs for this text.
template <typename Item>
void LogFormatError(const Item& item) {
    WRB_LOG(kLogError, L"%s - Server\\MasterService\\CmdHndlr\\libCmdHndlrClient\\cmdhl_Others", L"processCFWLogFile",
            __LINE__,
            L"processCFWLogFile[format error]: cfwLog.byHead(%x), cfwLog.byRear(%x), cfwLog.byDirection(%x), "
            L"cfwLog.wPort(%d)",
            item.byHead, item.byRear, item.byDirection, item.wPort);
}

class RecordForwarder {
  public:
    RecordForwarder(const std::wstring& uid, CfwUpload& upload)
        : m_uid(uid.c_str()), m_upload(upload), m_lost(upload.lost) {}

    bool IsOver() const noexcept { return m_upload.IsOver(); }

    // All records count as lost until they are handed over: an exception leaves the rest counted.
    void Expect(uint32_t records) {
        m_lost.rows += records;
        m_lost.events += records;
    }

    // False when the record is lost.
    template <typename Item>
    bool Forward(const Item& item) {
        if (!HasPfwLogMarkers(item)) {
            LogFormatError(item);
            --m_lost.rows;
            --m_lost.events;
            return false;
        }
        m_time.Set(item.dwTime);
        DecodePfwLogTexts(item, m_texts);
        return Send({m_uid, m_time.Date(), m_time.Time(), m_texts.localHost, m_texts.remoteHost, item.wProtocol,
                     item.wType, item.wSubType, item.wPort, item.byDirection,
                     IsPathHidden(item.byDirection) ? L"" : m_texts.pvName, m_texts.pvInfo, kFirewallLog});
    }

  private:
    bool IsPathHidden(uint8_t direction) const {
        return (direction == kGuardedDirection && !ShowsAllPaths()) || std::wcscmp(m_texts.pvName, L"Idle") == 0;
    }

    static bool ShowsAllPaths() { return ServerIniCache().readINIInt("INI_SERVER_SECTION", "CFWShowAllPV", 0) != 0; }

    bool Send(const FirewallLogEntry& entry) const {
        if (m_upload.SendToAgentClient(entry)) {
            --m_lost.events;
        } else {
            WRB_LOG(kLogDebug8, L"qmaSendFirewallLog: send agent log failed(%s)", m_uid);
        }
        if (!m_upload.SendToLogPool(entry)) {
            WRB_LOG(kLogDebug8, L"processCFWLogFile:uid=%s fail", m_uid);
            return false;
        }
        --m_lost.rows;
        return true;
    }

    const wchar_t* m_uid;
    CfwUpload& m_upload;
    Undelivered& m_lost;
    LocalTimeDigits m_time;
    PfwLogTexts m_texts;
};

// The last one may be cut.
uint32_t RecordsIn(uint32_t size, uint32_t itemBytes) {
    return size / itemBytes + (size % itemBytes != 0 ? 1 : 0);
}

// Of a file that cannot be opened: by its size, or one where not even that is known.
uint32_t RecordsIn(const wchar_t* fileName) {
    WIN32_FILE_ATTRIBUTE_DATA file{};
    if (!GetFileAttributesExW(fileName, GetFileExInfoStandard, &file)) {
        return 1;
    }
    return RecordsIn(file.nFileSizeLow, PfwLogRecordSize(PfwLogVersionOfSize(file.nFileSizeLow)));
}

FileHandle OpenLog(const wchar_t* fileName) {
    const CancelAfter limit(kUploadFileMilliseconds);
    return FileHandle(
        CreateFileW(fileName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

template <typename Item>
int32_t ForwardRecords(HANDLE file, uint32_t size, RecordForwarder& forwarder) {
    forwarder.Expect(RecordsIn(size, sizeof(Item)));
    int32_t result = kForwarded;
    PfwLogReader reader(file, sizeof(Item));
    while (const void* const record = reader.Next()) {
        if (forwarder.IsOver()) {
            return kRecordLost;
        }
        if (!forwarder.Forward(*static_cast<const Item*>(record))) {
            result = kRecordLost;
        }
    }
    return result;
}

PfwLogVersion VersionOf(HANDLE file, uint32_t size) {
    const PfwLogVersion version = PfwLogVersionOfFile(file, size);
    WRB_LOG(kLogDebug, L"processCFWLogFile:final log version(%d)", static_cast<int32_t>(version));
    return version;
}

}  // namespace
}  // namespace wrb

int32_t processCFWLogFile(const std::wstring& uid, const wchar_t* fileName, wrb::CfwUpload& upload) {
    using namespace wrb;
    WRB_LOG(kLogDebug8, L"processCFWLogFile: FileName=%s", fileName);
    RecordForwarder forwarder(uid, upload);
    const FileHandle file = OpenLog(fileName);
    if (!file) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogNotice5, L"processCFWLogFile:Fail open file err=%d, '%s'", error, fileName);
        forwarder.Expect(RecordsIn(fileName));
        return kForwarded;
    }
    const DWORD size = GetFileSize(file.Get(), nullptr);  // no package holds a file that needs the upper half
    switch (VersionOf(file.Get(), size)) {
        case PfwLogVersion::kV0:
            return ForwardRecords<SWRB_PFW_LOG_ITEM_V0>(file.Get(), size, forwarder);
        case PfwLogVersion::kV1:
            return ForwardRecords<SWRB_PFW_LOG_ITEM>(file.Get(), size, forwarder);
        case PfwLogVersion::kUnknown:
            break;
    }
    WRB_LOG(kLogError,
            L"processCFWLogFile: processCFWLogFile ERROR:GetFileSize(%d), sizeof(SWRB_PFW_LOG_ITEM_V0)=(%d), "
            L"(sizeof(SWRB_PFW_LOG_ITEM)=(%d)",
            size, PfwLogRecordSize(PfwLogVersion::kV0), PfwLogRecordSize(PfwLogVersion::kV1));
    return kForwarded;
}
