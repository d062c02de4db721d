#include <iostream>
#include <optional>
#include <string>

#include "Console.h"
#include "Failure.h"
#include "HomeFolder.h"
#include "OSException.h"
#include "ProtectionKeyFile.h"
#include "Subcommands.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Example:
  wrbctl protect < password.txt

The text is read from the standard input so that it shows in no list of processes and in no history of commands.

Exit codes: 0 done, 1 there is no key, or the text cannot be protected, 2 wrong command line or no text.
)";

struct ProtectOptions {};

int RunProtect(const ProtectOptions&) {
    const std::wstring ini = HomeFolder() + kServerIniFile;
    const std::optional<ProtectionKey> key = ReadProtectionKey(ini);
    if (!key) {
        return Fail(kExitFailed, WideToUtf8(ini) + " has no protection key: make one with wrbctl make-key");
    }
    std::string line;
    if (!std::getline(std::cin, line) || line.empty()) {
        return Fail(kExitUsage, "no text on the standard input");
    }
    if (line.back() == '\r') {
        line.pop_back();
    }
    try {
        PrintOut(WideToUtf8(StringProtection(*key).Protect(Utf8ToWide(line))) + "\n");
    } catch (const OS::CException& error) {
        return Fail(kExitFailed, std::string("cannot protect the text: ") + error.what());
    }
    return kExitOk;
}

}  // namespace

void AddProtect(CLI::App& app, Run& run) {
    AddSubcommand(app, "protect",
                  "Print the first line of the standard input protected with the server's key, for an INI file",
                  kExamples, std::make_shared<ProtectOptions>(), RunProtect, run);
}

}  // namespace wrb
