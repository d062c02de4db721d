#include "OwnModule.h"

#include <windows.h>

#include <vector>

#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kModulePathCapacity = 32768;
const LPCWSTR kVersionResource = MAKEINTRESOURCEW(16);  // RT_VERSION, for wide functions

// The value in the version resource, or null. It lies in `resource`.
template <typename Value>
const Value* Query(const std::vector<BYTE>& resource, const std::wstring& name, std::size_t leastSize) {
    void* value = nullptr;
    UINT size = 0;
    const bool found = VerQueryValueW(resource.data(), name.c_str(), &value, &size) != 0 && size >= leastSize;
    return found ? static_cast<const Value*>(value) : nullptr;
}

// In the first language that the resource has.
std::wstring QueryText(const std::vector<BYTE>& resource, const wchar_t* name) {
    const WORD* const language = Query<WORD>(resource, L"\\VarFileInfo\\Translation", 2 * sizeof(WORD));
    if (language == nullptr) {
        return {};
    }
    const wchar_t* const text =
        Query<wchar_t>(resource, FormatWide(L"\\StringFileInfo\\%04x%04x\\%s", language[0], language[1], name), 1);
    return text != nullptr ? text : L"";
}

ModuleVersion VersionIn(const std::vector<BYTE>& resource) {
    ModuleVersion version;
    if (resource.empty()) {
        return version;
    }
    if (const auto* const fixed = Query<VS_FIXEDFILEINFO>(resource, L"\\", sizeof(VS_FIXEDFILEINFO))) {
        version.build = LOWORD(fixed->dwFileVersionLS);
    }
    version.productName = QueryText(resource, L"ProductName");
    version.productVersion = QueryText(resource, L"ProductVersion");
    return version;
}

HMODULE OwnModule() noexcept {
    static const wchar_t here = L'\0';
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, &here,
                       &module);
    return module;
}

}  // namespace

std::wstring OwnModulePath() {
    std::wstring path(kModulePathCapacity, L'\0');
    path.resize(GetModuleFileNameW(OwnModule(), path.data(), kModulePathCapacity));
    return path;
}

ModuleVersion ReadModuleVersion(const std::wstring& path) {
    DWORD ignored = 0;
    std::vector<BYTE> resource(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    const bool isRead = !resource.empty() && GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()),
                                                                 resource.data()) != FALSE;
    return isRead ? VersionIn(resource) : ModuleVersion();
}

ModuleVersion OwnModuleVersion() {
    const HMODULE module = OwnModule();
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), kVersionResource);
    const HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    const auto* const bytes = static_cast<const BYTE*>(loaded != nullptr ? LockResource(loaded) : nullptr);
    return bytes != nullptr ? VersionIn({bytes, bytes + SizeofResource(module, found)}) : ModuleVersion();
}

}  // namespace wrb
