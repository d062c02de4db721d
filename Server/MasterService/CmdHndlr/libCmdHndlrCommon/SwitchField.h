// A switch as it travels in an update message.
#pragma once

#include <string>

#include "CmdProtocol.h"

namespace wrb {

// Takes the next field: on only when it is exactly "1".
inline bool ReadSwitch(CCmdProtocol& message) {
    std::wstring field;
    message >> field;
    return field == L"1";
}

}  // namespace wrb
