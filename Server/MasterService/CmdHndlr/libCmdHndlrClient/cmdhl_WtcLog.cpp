#include "cmdhl_WtcLog.h"

#include <windows.h>

#include <share.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "CmdProtocol.h"
#include "CommandSlot.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "OpenSecurity.h"
#include "Text.h"
#include "WrittenHandlers.h"

namespace {

constexpr wchar_t kFunction[] = L"cmdhl_AppendWtcRecord";
constexpr wchar_t kMutexName[] = L"wrby_wtc_mutex";
constexpr DWORD kWaitMilliseconds = 3000;

struct WtcRecord {
    std::array<char, 129> entryName;
    std::array<char, 37> guid;
};
static_assert(sizeof(WtcRecord) == 166);

// Other programs of the server use the mutex under other accounts. One of them may have made it, and then it need not
// grant all that a creator asks for.
wrb::KernelHandle OpenWtcMutex() {
    wrb::OpenSecurity security;
    if (wrb::InitOpenSecurity(security, false) == nullptr) {
        if (wrb::KernelHandle mutex(CreateMutexW(&security.attributes, FALSE, kMutexName)); mutex) {
            return mutex;
        }
    }
    return wrb::KernelHandle(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, kMutexName));
}

class WtcLock {
  public:
    WtcLock() : m_mutex(OpenWtcMutex()) {
        const DWORD wait = m_mutex ? WaitForSingleObject(m_mutex.Get(), kWaitMilliseconds) : WAIT_FAILED;
        // Abandoned: its owner died while it wrote. The log is a row of records; the next one goes behind the last.
        m_owned = wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED;
    }
    ~WtcLock() { ReleaseMutex(m_mutex.Get()); }  // fails, without harm, where it is not owned
    WtcLock(const WtcLock&) = delete;
    WtcLock& operator=(const WtcLock&) = delete;

    explicit operator bool() const noexcept { return m_owned; }

  private:
    wrb::KernelHandle m_mutex;
    bool m_owned = false;
};

// Cuts whole characters, so that half of a double-byte one is never left at the end.
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

bool cmdhl_AppendWtcRecord(const wchar_t* entryName, const wchar_t* guid) {
    if (ScanIniCache().readINIInt(L"GLN_FEEDBACK_SECTION", L"GLNFeedbackEnabled", 0) == 0) {
        return true;
    }
    const std::wstring home = wrb::HomeFolder();
    if (home.empty()) {  // a relative path would lead into whatever folder is the current one
        WRB_LOG(kLogError, L"%s - no home folder", kFunction);
        return false;
    }
    const WtcLock lock;
    if (!lock) {
        WRB_LOG(kLogDebug8, L"%s - the feedback log is busy", kFunction);
        return false;
    }
    WtcRecord record;
    FillField(record.entryName, entryName);
    FillField(record.guid, guid);
    const std::wstring path = WtcLogPath(home);
    if (DWORD error = 0; !AppendToFile(path, record, error)) {
        WRB_LOG(kLogError, L"%s - cannot append to %s, err=%d", kFunction, path.c_str(), error);
    }
    return true;
}

void cmdhl_AddWtcLog(CCmdProtocol& message) {
    const wrb::CounterCall call(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_ADD_WTC_LOG));
    std::wstring entryName;
    std::wstring guid;
    message >> entryName >> guid;
    cmdhl_AppendWtcRecord(entryName.c_str(), guid.c_str());
}
