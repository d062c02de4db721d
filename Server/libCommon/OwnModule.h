// The file that this code runs from: the DLL, or the program into which it is linked.
#pragma once

#include <cstdint>
#include <string>

namespace wrb {

// Its full path; empty when the system does not tell.
std::wstring OwnModulePath();

// What a file's version resource says. A file without one has empty texts and 0.
struct ModuleVersion {
    std::wstring productName;
    std::wstring productVersion;
    uint16_t build = 0;  // the last of the four numbers of the file version
};

ModuleVersion ReadModuleVersion(const std::wstring& path);

// That of OwnModulePath, from memory: nobody can hold it up.
ModuleVersion OwnModuleVersion();

}  // namespace wrb
