// The protection key in the server INI, for programs that read it now and then.
#pragma once

#include <optional>
#include <string>

#include "StringProtection.h"

namespace wrb {

// Nothing when the file has no key of 64 hexadecimal digits. Read without a cache, within two
// seconds.
std::optional<ProtectionKey> ReadProtectionKey(const std::wstring& serverIni);

}  // namespace wrb
