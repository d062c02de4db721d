#include <windows.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "Console.h"
#include "Failure.h"
#include "HomeFolder.h"
#include "OSException.h"
#include "StringProtection.h"
#include "Subcommands.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl make-key                            in the server's home folder
  wrbctl make-key --ini D:\new\wrbserver.ini

Exit codes: 0 done, 1 there is a key already, or the file cannot be written, 2 wrong command line.
)";

struct MakeKeyOptions {
    std::string ini;  // the server INI; empty: Private\wrbserver.ini in the home folder
    bool force = false;
};

// Any value counts: one with a mistake in it may be the key that the agents have.
bool HasValue(const std::wstring& ini) {
    wchar_t text[2];
    return GetPrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, L"", text, 2, ini.c_str()) != 0;
}

int RunMakeKey(const MakeKeyOptions& options) {
    // The system looks for a relative path in its own folder.
    const std::filesystem::path path =
        std::filesystem::absolute(options.ini.empty() ? HomeFolder() + kServerIniFile : Utf8ToWide(options.ini));
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

}  // namespace

void AddMakeKey(CLI::App& app, Run& run) {
    const auto options = std::make_shared<MakeKeyOptions>();
    CLI::App* const makeKey = AddSubcommand(
        app, "make-key",
        "Write a new protection key into the server INI; agents need the same to read web-threat settings", kExamples,
        options, RunMakeKey, run);
    makeKey->add_option("--ini", options->ini, "Server INI (default: Private\\wrbserver.ini in the home folder)");
    makeKey->add_flag("--force", options->force, "Replace the key that is there");
}

}  // namespace wrb
