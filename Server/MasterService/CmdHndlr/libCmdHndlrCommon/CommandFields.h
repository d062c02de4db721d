// Fields of a command that CCmdProtocol does not read itself. Each function takes the next field.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "CmdProtocol.h"
#include "Text.h"

namespace wrb {

// On only when the field is exactly "1".
inline bool TakeSwitch(CCmdProtocol& message) {
    std::wstring field;
    message >> field;
    return field == L"1";
}

// An unsigned 32-bit number in decimal (CCmdProtocol reads numbers as signed). Leading blanks and a sign are allowed,
// the number ends at the first other character, no digits give 0. A number of more than 32 bits becomes 4294967295; a
// negative one the number of the same bits.
inline uint32_t TakeUnsigned(CCmdProtocol& message) {
    constexpr int64_t kMost = std::numeric_limits<uint32_t>::max();
    std::wstring field;
    message >> field;
    const int64_t number = ParseInt64(field);
    return static_cast<uint32_t>(number < -kMost ? kMost : std::min(number, kMost));
}

}  // namespace wrb
