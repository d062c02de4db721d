#include <windows.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "HomeFolder.h"
#include "OSException.h"
#include "StringProtection.h"
#include "Text.h"

namespace wrb {
namespace {

// Any value counts: one with a mistake in it may be the key that the agents have.
bool HasValue(const std::wstring& ini) {
    wchar_t text[2];
    return GetPrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, L"", text, 2, ini.c_str()) != 0;
}

}  // namespace

int RunMakeKey(const MakeKeyOptions& options) {
    // The system looks for a relative path in its own folder.
    const std::filesystem::path path = std::filesystem::absolute(
        options.ini.empty() ? HomeFolder() + L"Private\\wrbserver.ini" : Utf8ToWide(options.ini));
    const std::string name = WideToUtf8(path.wstring());
    if (!options.force && HasValue(path.wstring())) {
        return Fail(kExitFailed, name + " has a key; --force replaces it, and then the agents need the new one");
    }
    try {
        std::error_code exists;
        std::filesystem::create_directory(path.parent_path(), exists);
        const std::wstring key = MakeProtectionKey();
        if (!WritePrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, key.c_str(), path.c_str())) {
            const DWORD error = GetLastError();
            return FailSystem(kExitFailed, "cannot write " + name, error);
        }
    } catch (const OS::CException& error) {
        return Fail(kExitFailed, std::string("cannot make a key: ") + error.what());
    }
    PrintOut("made a key in " + name + "; the agents need the same\n");
    return kExitOk;
}

}  // namespace wrb
