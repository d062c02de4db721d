#include "PackageLibrary.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

#include "DebugLog.h"
#include "FileSignature.h"
#include "Handle.h"
#include "INICache.h"
#include "OwnModule.h"
#include "Text.h"

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

// False, after a log line, when the server INI wants a signature and the library has none that is trusted. A library
// that was checked stays open as `file`, so that nobody can replace it before it is loaded.
bool CheckSignature(const std::wstring& path, FileHandle& file) {
    if (ServerIniCache().readINIInt("INI_SERVER_SECTION", "RequireSignedLibraries", 0) != 1) {
        return true;
    }
    file.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                           nullptr));
    const DWORD error = GetLastError();
    const auto result = static_cast<unsigned>(file ? VerifyFileSignature(file.Get(), path) : error);
    if (result != ERROR_SUCCESS) {
        WRB_LOG(kLogError, L"%s - no trusted signature of %s, result=0x%08x", L"ExtractPackage", path.c_str(), result);
    }
    return result == ERROR_SUCCESS;
}

// Loads by a full path, and the library's own dependencies from its folder and the system's only: never from the
// current folder or the search path.
ExtractFunction Bind() {
    const std::wstring path = LibraryPath();
    FileHandle checked;
    if (!CheckSignature(path, checked)) {
        return nullptr;
    }
    ModuleHandle library(
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
    const FARPROC entry = library ? GetProcAddress(library.Get(), "fpkExtractFile") : nullptr;
    if (entry == nullptr) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - cannot bind fpkExtract of %s, err=%d", L"ExtractPackage", path.c_str(), error);
        return nullptr;
    }
    static_cast<void>(library.Release());  // never unloaded: another thread may be inside
    // Through void*: a direct cast between function pointer types gives a warning.
    return reinterpret_cast<ExtractFunction>(reinterpret_cast<void*>(entry));
}

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
    static const ExtractFunction extract = Bind();
    const std::optional<AnsiPath> folder = ToAnsiPath(directory);
    return extract != nullptr && folder && extract(package, folder->data(), callback, context) == kExtracted;
}

}  // namespace wrb
