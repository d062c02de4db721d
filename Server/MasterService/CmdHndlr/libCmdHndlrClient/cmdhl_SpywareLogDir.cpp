#include "cmdhl_SpywareLogDir.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DebugLog.h"
#include "Handle.h"
#include "OpenSecurity.h"
#include "ReadableFile.h"
#include "ServerStopEvent.h"
#include "SystemText.h"
#include "Text.h"
#include "UploadFile.h"
#include "cmdhl_WtcLog.h"

namespace {

constexpr wchar_t kFunction[] = L"cmdhl_ScanSpywareLogDir";
// Compared with case, unlike by the profile functions: a section that differs in case is an entry.
constexpr wchar_t kGeneralInfo[] = L"GeneralInfo";
constexpr DWORD kNamesCharacters = 14000;
constexpr DWORD kGuidCharacters = 64;
constexpr uint64_t kMostBytes = 16 << 20;  // of a log: the profile functions read the whole file into memory
constexpr unsigned kMostEntries = 10'000;  // of a package: a few kilobytes can unpack to gigabytes of records
constexpr unsigned kMostCounted = 10 * kMostEntries;  // the walk ends here, also when it only counts
constexpr unsigned kMostWaits = 3;  // for a busy feedback log; from then on records are tried without waiting

// Null: the walk visits the entry.
const wchar_t* WhyPassedOver(const std::wstring& path, const WIN32_FIND_DATAW& entry) {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return L"a link";
    }
    if (path.size() >= MAX_PATH) {
        return L"too long a path";
    }
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const uint64_t bytes = uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow;
    return !isFolder && bytes > kMostBytes ? L"too large" : nullptr;
}

class SpywareLogWalk {
  public:
    explicit SpywareLogWalk(HANDLE stopEvent) : m_stopEvent(stopEvent), m_names(kNamesCharacters + 2) {}

    // Walks the folder, then logs the number of records dropped. Returns the number that are not in the feedback log.
    unsigned Walk(const std::wstring& folder);

  private:
    // Each returns false to end the walk. The length of a path bounds the depth.
    bool WalkFolder(const std::wstring& folder);
    bool VisitEntry(const std::wstring& path, const WIN32_FIND_DATAW& entry);
    bool RecordLog(const std::wstring& path);
    bool RecordEntries(const std::wstring& path, int32_t sectionCount, const wchar_t* guid);
    bool RecordEntry(const std::wstring& path, const wchar_t* name, const wchar_t* guid);

    void ReadNames(const std::wstring& path);
    void TestStop() { m_isStopped = m_isStopped || WaitForSingleObject(m_stopEvent, 0) != WAIT_TIMEOUT; }

    HANDLE m_stopEvent;
    bool m_isStopped = false;  // from then on entries are only counted
    unsigned m_entries = 0;
    unsigned m_busy = 0;
    unsigned m_lost = 0;           // the busy ones, too
    std::vector<wchar_t> m_names;  // of one file; two NULs always end it
};

unsigned SpywareLogWalk::Walk(const std::wstring& folder) {
    WalkFolder(folder);
    if (m_busy != 0) {
        WRB_LOG(kLogWarning, L"%s - %u records dropped, the feedback log was busy: %s", kFunction, m_busy,
                folder.c_str());
    }
    return m_lost != 0 && wrb::IsFeedbackLogOn() ? m_lost : 0;
}

bool SpywareLogWalk::WalkFolder(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    const wrb::SearchHandle found(FindFirstFileW((folder + L"\\*.*").c_str(), &entry));
    if (!found) {
        return true;
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (name == L"." || name == L"..") {
            continue;
        }
        if (!VisitEntry(folder + L"\\" + entry.cFileName, entry)) {
            return false;
        }
        TestStop();
    } while (FindNextFileW(found.Get(), &entry));
    return true;
}

bool SpywareLogWalk::VisitEntry(const std::wstring& path, const WIN32_FIND_DATAW& entry) {
    if (const wchar_t* const reason = WhyPassedOver(path, entry)) {
        WRB_LOG(kLogDebug8, L"%s - passed over, %s: %s", kFunction, reason, path.c_str());
        return true;
    }
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? WalkFolder(path) : RecordLog(path);
}

// Of a log that cannot be read one entry counts as lost: how many it has is not known.
bool SpywareLogWalk::RecordLog(const std::wstring& path) {
    wchar_t guid[kGuidCharacters] = L"";
    int32_t sectionCount = 0;
    const uint32_t error = wrb::WhileReadable(path, wrb::kUploadFileMilliseconds, [&] {
        GetPrivateProfileStringW(kGeneralInfo, L"GUID", L"", guid, kGuidCharacters, path.c_str());
        sectionCount = static_cast<int32_t>(GetPrivateProfileIntW(kGeneralInfo, L"SectionCount", 0, path.c_str()));
        ReadNames(path);
    });
    if (error != ERROR_SUCCESS) {
        WRB_LOG(kLogWarning, L"%s - cannot read %s: %s", kFunction, path.c_str(), wrb::WideSystemText(error).c_str());
        ++m_lost;
        return error != ERROR_OPERATION_ABORTED;
    }
    return RecordEntries(path, sectionCount, guid);
}

void SpywareLogWalk::ReadNames(const std::wstring& path) {
    m_names[0] = m_names[1] = L'\0';
    const DWORD characters = GetPrivateProfileSectionNamesW(m_names.data(), kNamesCharacters, path.c_str());
    if (characters == kNamesCharacters - 2) {
        WRB_LOG(kLogDebug8, L"%s - more sections than fit: %s", kFunction, path.c_str());
    }
}

bool SpywareLogWalk::RecordEntries(const std::wstring& path, int32_t sectionCount, const wchar_t* guid) {
    const wchar_t* name = m_names.data();
    // 64 bits wide: the count comes from the file.
    for (int64_t left = int64_t{sectionCount} + 1; left > 0 && *name != L'\0'; --left) {
        const std::wstring_view text = name;
        if (text != kGeneralInfo && !RecordEntry(path, name, guid)) {
            return false;
        }
        name += text.size() + 1;
    }
    return true;
}

bool SpywareLogWalk::RecordEntry(const std::wstring& path, const wchar_t* name, const wchar_t* guid) {
    if (m_entries == kMostEntries) {
        WRB_LOG(kLogWarning, L"%s - more than %u entries, left out from here on: %s", kFunction, kMostEntries,
                path.c_str());
        m_isStopped = true;
    }
    ++m_entries;
    if (m_isStopped) {
        ++m_lost;
        return m_entries < kMostCounted;
    }
    const wrb::WtcAppend result =
        cmdhl_AppendWtcRecord(name, guid, m_busy < kMostWaits ? wrb::kWtcWaitMilliseconds : 0);
    m_busy += result == wrb::WtcAppend::Busy ? 1 : 0;
    m_lost += result != wrb::WtcAppend::Done ? 1 : 0;
    m_isStopped = result == wrb::WtcAppend::NoHome;  // the others fail, too
    TestStop();
    return true;
}

// For the profile functions a relative path starts in the Windows folder.
std::wstring FullPath(const char* directory) {
    const std::wstring path = wrb::AnsiToWide(directory);
    wchar_t full[MAX_PATH];
    const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    return length < MAX_PATH ? std::wstring(full, length) : std::wstring();
}

}  // namespace

void cmdhl_ScanSpywareLogDir(const char* directory, wrb::Undelivered* lost) {
    // Without an open descriptor the mutex of the feedback log cannot be shared.
    wrb::OpenSecurity security;
    if (wrb::InitOpenSecurity(security) != nullptr) {
        return;
    }
    const wrb::KernelHandle stopEvent(OpenEventW(EVENT_ALL_ACCESS, FALSE, wrb::kServerStopEvent));
    const std::wstring folder = FullPath(directory);
    if (stopEvent && !folder.empty()) {
        const unsigned rows = SpywareLogWalk(stopEvent.Get()).Walk(folder);
        if (lost != nullptr) {
            lost->rows += rows;
        }
    }
}
