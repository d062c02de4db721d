#include "OwnModule.h"

#include <windows.h>

#include <vector>

#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kModulePathCapacity = 32768;

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

}  // namespace

std::wstring OwnModulePath() {
    static const wchar_t here = L'\0';
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, &here,
                       &module);
    std::wstring path(kModulePathCapacity, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), kModulePathCapacity));
    return path;
}

ModuleVersion ReadModuleVersion(const std::wstring& path) {
    ModuleVersion version;
    DWORD ignored = 0;
    std::vector<BYTE> resource(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    if (resource.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data())) {
        return version;
    }
    if (const auto* const fixed = Query<VS_FIXEDFILEINFO>(resource, L"\\", sizeof(VS_FIXEDFILEINFO))) {
        version.build = LOWORD(fixed->dwFileVersionLS);
    }
    version.productName = QueryText(resource, L"ProductName");
    version.productVersion = QueryText(resource, L"ProductVersion");
    return version;
}

}  // namespace wrb
