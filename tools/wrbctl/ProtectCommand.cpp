#include <iostream>
#include <optional>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "HomeFolder.h"
#include "OSException.h"
#include "ProtectionKeyFile.h"
#include "Text.h"

namespace wrb {

int RunProtect() {
    const std::wstring ini = HomeFolder() + L"Private\\wrbserver.ini";
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

}  // namespace wrb
