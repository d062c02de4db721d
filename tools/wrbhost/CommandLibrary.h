// The command library, bound at run time through its exports.
#pragma once

#include <string>

#include "Handle.h"
#include "cmdhl.h"

namespace wrb {

// The four entry points; they are valid while their library object lives.
struct EntryPoints {
    cmdhl_InitializeFn initialize = nullptr;
    cmdhl_ProcessFn process = nullptr;
    cmdhl_FinalizeFn finalize = nullptr;
    cmdhl_ReloadDebugSettingFn reloadDebugSetting = nullptr;
};

class CommandLibrary {
  public:
    // Loads the DLL and finds all four exports; DLLs that it needs are searched in its folder first. `path` may be
    // relative to the current folder. Returns an empty text, or a description of the error.
    std::string Load(const std::wstring& path);

    const EntryPoints& Exports() const { return m_exports; }

  private:
    ModuleHandle m_module;
    EntryPoints m_exports;
};

// libCmdHndlrClient.dll in the folder of the running program.
std::wstring DefaultLibraryPath();

}  // namespace wrb
