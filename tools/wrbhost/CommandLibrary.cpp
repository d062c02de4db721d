#include "CommandLibrary.h"

#include <windows.h>

#include <filesystem>

#include "HomeFolder.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

template <typename Function>
bool Bind(HMODULE module, const char* name, Function& function) {
    // By way of void*: a function pointer may not be cast to one of another type without a warning.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return function != nullptr;
}

}  // namespace

std::string CommandLibrary::Load(const std::wstring& path) {
    std::error_code ignored;
    const std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
    m_module = ModuleHandle(LoadLibraryExW(absolute.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!m_module) {
        const DWORD error = GetLastError();
        return "cannot load " + WideToUtf8(absolute.wstring()) + ": " + SystemText(error);
    }
    const HMODULE module = m_module.Get();
    if (!Bind(module, "cmdhl_Initialize", m_exports.initialize) || !Bind(module, "cmdhl_Process", m_exports.process) ||
        !Bind(module, "cmdhl_Finalize", m_exports.finalize) ||
        !Bind(module, "cmdhl_ReloadDebugSetting", m_exports.reloadDebugSetting)) {
        return WideToUtf8(absolute.wstring()) + " is not a command library: it lacks one of the four exports";
    }
    return {};
}

std::wstring DefaultLibraryPath() {
    return ProgramFolder() + L"libCmdHndlrClient.dll";
}

}  // namespace wrb
