#include "PackageLibrary.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

#include "CancelAfter.h"
#include "Deadline.h"
#include "DebugLog.h"
#include "FileSignature.h"
#include "Handle.h"
#include "INICache.h"
#include "OwnModule.h"
#include "SRWLock.h"
#include "SystemText.h"
#include "Text.h"
#include "UploadFile.h"

namespace wrb {
namespace {

constexpr wchar_t kLibraryName[] = L"WrbPfwCommon_64x.dll";
constexpr std::size_t kAnsiPathCapacity = 260;
constexpr uint8_t kExtracted = 1;

// The result is a byte, not a bool: the library may return values other than 0 and 1.
using ExtractFunction = uint8_t (*)(void*, const char*, PackageCallback, void*);

std::wstring LibraryPath() {
    std::wstring path = OwnModulePath();
    path.resize(path.find_last_of(L'\\') + 1);
    return path.append(kLibraryName);
}

// While it is open, nobody can replace the library or get an oplock on it that would hold up its loading: the load
// itself has no time limit.
FileHandle OpenLibrary(const std::wstring& path, DWORD& error) {
    const CancelAfter limit(kUploadFileMilliseconds);
    FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    error = file ? ERROR_SUCCESS : GetLastError();
    return file;
}

// False, after a log line, when the server INI wants a signature and the library has none that is trusted. `error` is
// that of opening `file`.
bool CheckSignature(const std::wstring& path, const FileHandle& file, DWORD error) {
    if (ServerIniCache().readINIInt("INI_SERVER_SECTION", "RequireSignedLibraries", 0) != 1) {
        return true;
    }
    const auto result = static_cast<unsigned>(file ? VerifyFileSignature(file.Get(), path) : error);
    if (result != ERROR_SUCCESS) {
        WRB_LOG(kLogError, L"%s - no trusted signature of %s: %s", L"ExtractPackage", path.c_str(),
                WideSystemText(result).c_str());
    }
    return result == ERROR_SUCCESS;
}

void LogUnbound(const std::wstring& path, DWORD error) {
    WRB_LOG(kLogError, L"%s - cannot bind fpkExtract of %s: %s", L"ExtractPackage", path.c_str(),
            WideSystemText(error).c_str());
}

// Loads by a full path, and the library's own dependencies from its folder and the system's only: never from the
// current folder or the search path.
ExtractFunction Bind(const std::wstring& path) {
    ModuleHandle library(
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
    const FARPROC entry = library ? GetProcAddress(library.Get(), "fpkExtractFile") : nullptr;
    if (entry == nullptr) {
        LogUnbound(path, GetLastError());
        return nullptr;
    }
    static_cast<void>(library.Release());  // never unloaded: another thread may be inside
    // Through void*: a direct cast between function pointer types gives a warning.
    return reinterpret_cast<ExtractFunction>(reinterpret_cast<void*>(entry));
}

// The library's function, bound at the first call. A library that another process holds is tried again a second later:
// those who have waited for a try in vain do not wait for the next one.
class BoundLibrary {
  public:
    ExtractFunction Get() {
        const ExclusiveGuard guard(m_lock);
        if (!m_isDecided && m_rest.Remaining() == 0) {
            Try();
        }
        return m_extract;
    }

  private:
    void Try() WRB_REQUIRES(m_lock) {
        const std::wstring path = LibraryPath();
        DWORD error = ERROR_SUCCESS;
        const FileHandle file = OpenLibrary(path, error);
        if (error == ERROR_OPERATION_ABORTED || error == ERROR_SHARING_VIOLATION) {
            LogUnbound(path, error);
            m_rest = Deadline(kRestMilliseconds);
            return;
        }
        m_extract = CheckSignature(path, file, error) ? Bind(path) : nullptr;
        m_isDecided = true;
    }

    static constexpr uint32_t kRestMilliseconds = 1'000;

    CWrbSRWLock m_lock;
    bool m_isDecided WRB_GUARDED_BY(m_lock) = false;
    ExtractFunction m_extract WRB_GUARDED_BY(m_lock) = nullptr;
    Deadline m_rest WRB_GUARDED_BY(m_lock){0};
};

using AnsiPath = std::array<char, kAnsiPathCapacity>;

// Nothing when the path does not fit or does not convert back to itself: it would name another file.
std::optional<AnsiPath> ToAnsiPath(const std::wstring& wide) {
    const std::string narrow = WideToAnsi(wide.c_str());
    if (narrow.size() >= kAnsiPathCapacity || AnsiToWide(narrow) != wide.c_str()) {
        WRB_LOG(kLogDebug8, L"%s - no path of at most %d ANSI bytes: %s", L"ExtractPackage",
                static_cast<int>(kAnsiPathCapacity - 1), wide.c_str());
        return std::nullopt;
    }
    AnsiPath path{};
    std::memcpy(path.data(), narrow.data(), narrow.size());
    return path;
}

}  // namespace

bool ExtractPackage(HANDLE package, const std::wstring& directory, PackageCallback callback, void* context) {
    static BoundLibrary library;
    const ExtractFunction extract = library.Get();
    const std::optional<AnsiPath> folder = ToAnsiPath(directory);
    return extract != nullptr && folder && extract(package, folder->data(), callback, context) == kExtracted;
}

}  // namespace wrb
