#include "cmdhl_WtcLog.h"

#include <windows.h>

#include <share.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "CancelAfter.h"
#include "CmdProtocol.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "NamedMutex.h"
#include "SystemText.h"
#include "Text.h"

namespace {

using wrb::WtcAppend;

constexpr wchar_t kFunction[] = L"cmdhl_AppendWtcRecord";
constexpr wchar_t kMutexName[] = L"wrby_wtc_mutex";
constexpr wchar_t kSection[] = L"GLN_FEEDBACK_SECTION";
constexpr int32_t kDefaultMaxSizeInK = 65'536;
constexpr uint32_t kFileMilliseconds = 2'000;

// Commands wait for the mutex side by side. Once one has waited in vain, one at a time waits until somebody gets it: a
// process that holds the mutex must not take all workers.
class BusyWait {
  public:
    explicit BusyWait(uint32_t milliseconds) noexcept
        : m_isHeld(s_isHeld),
          m_isAllowed(!m_isHeld || !s_isTried.exchange(true)),
          m_limit(m_isAllowed ? milliseconds : 0) {}
    ~BusyWait() {
        if (m_isHeld && m_isAllowed) {
            s_isTried = false;
        }
    }
    BusyWait(const BusyWait&) = delete;
    BusyWait& operator=(const BusyWait&) = delete;

    uint32_t Limit() const noexcept { return m_limit; }

    void NoteResult(bool isLocked) const noexcept {
        if (isLocked || m_limit != 0) {
            s_isHeld = !isLocked;
        }
    }

  private:
    static constinit inline std::atomic<bool> s_isHeld{false};
    static constinit inline std::atomic<bool> s_isTried{false};

    const bool m_isHeld;
    const bool m_isAllowed;
    const uint32_t m_limit;
};

struct WtcRecord {
    std::array<char, 129> entryName;
    std::array<char, 37> guid;
};
static_assert(sizeof(WtcRecord) == 166);

// Cuts whole characters: half of a double-byte one must not stay at the end.
template <std::size_t N>
void FillField(std::array<char, N>& field, std::wstring_view text) {
    text = text.substr(0, 2 * N);  // a pair of UTF-16 units gives at least one byte
    std::string narrow = wrb::WideToAnsi(text);
    while (narrow.size() >= N) {
        text.remove_suffix(1);
        narrow = wrb::WideToAnsi(text);
    }
    field.fill('\0');
    narrow.copy(field.data(), N - 1);
}

std::wstring WtcLogPath(const std::wstring& home) {
    const std::wstring folder = home + L"temp";
    CreateDirectoryW(folder.c_str(), nullptr);  // when it cannot be made, the file cannot be opened
    return folder + L"\\wtc.log";
}

// Renames a log that has reached its limit, over the one that was renamed before. On failure `error` is the system's
// code.
bool MakeRoom(const std::wstring& path, DWORD& error) {
    WIN32_FILE_ATTRIBUTE_DATA file{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file)) {
        return true;  // there is none yet; otherwise opening it fails
    }
    const uint64_t bytes = uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
    const auto asked = static_cast<int32_t>(ScanIniCache().readINIInt(kSection, L"GLNFeedbackMaxSizeInK", 0));
    const auto limit = static_cast<uint64_t>(asked > 0 ? asked : kDefaultMaxSizeInK) * 1024;
    if (bytes < limit || MoveFileExW(path.c_str(), (path + L".1").c_str(), MOVEFILE_REPLACE_EXISTING)) {
        return true;
    }
    error = GetLastError();
    return false;
}

struct FileClose {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

// On failure `error` is the system's code.
bool AppendToFile(const std::wstring& path, const WtcRecord& record, DWORD& error) {
    std::unique_ptr<std::FILE, FileClose> file(_wfsopen(path.c_str(), L"at", _SH_DENYNO));
    if (file == nullptr || std::fwrite(&record, sizeof record, 1, file.get()) != 1) {
        error = GetLastError();  // before the file is closed
        return false;
    }
    if (std::fclose(file.release()) != 0) {  // writes what is buffered
        error = GetLastError();
        return false;
    }
    return true;
}

}  // namespace

bool wrb::IsFeedbackLogOn() {
    return ScanIniCache().readINIInt(kSection, L"GLNFeedbackEnabled", 0) != 0;
}

wrb::WtcAppend cmdhl_AppendWtcRecord(const wchar_t* entryName, const wchar_t* guid, uint32_t waitMilliseconds) {
    if (!wrb::IsFeedbackLogOn()) {
        return WtcAppend::Done;
    }
    const std::wstring home = wrb::HomeFolder();
    if (home.empty()) {  // a relative path would start in the current folder
        WRB_LOG(kLogError, L"%s - no home folder", kFunction);
        return WtcAppend::NoHome;
    }
    const wrb::KernelHandle mutex = wrb::OpenNamedMutex(kMutexName);
    const BusyWait wait(waitMilliseconds);
    const wrb::NamedMutexLock lock(mutex.Get(), wait.Limit());
    wait.NoteResult(static_cast<bool>(lock));
    if (!lock) {
        WRB_LOG(kLogDebug8, L"%s - the feedback log is busy", kFunction);
        return WtcAppend::Busy;
    }
    WtcRecord record;
    FillField(record.entryName, entryName);
    FillField(record.guid, guid);
    const std::wstring path = WtcLogPath(home);
    const wrb::CancelAfter limit(kFileMilliseconds);
    if (DWORD error = 0; !MakeRoom(path, error) || !AppendToFile(path, record, error)) {
        WRB_LOG(kLogError, L"%s - cannot append to %s: %s", kFunction, path.c_str(),
                wrb::WideSystemText(error).c_str());
        return WtcAppend::Lost;
    }
    return WtcAppend::Done;
}

void cmdhl_AddWtcLog(CCmdProtocol& message) {
    wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_ADD_WTC_LOG));
    std::wstring entryName;
    std::wstring guid;
    message >> entryName >> guid;
    const bool isWritten = cmdhl_AppendWtcRecord(entryName.c_str(), guid.c_str()) == WtcAppend::Done;
    call.ReportUndelivered({.rows = isWritten ? 0u : 1u});
}
