// How long the body of a POST may be, as the server's INI files say.
#pragma once

#include <cstdint>

#include "Gateway.h"

namespace wrb {

// One object a process: the server INI is read once.
class CPostSizeLimit {
  public:
    // In bytes, at most 1 GiB whatever the file says; a negative number there counts as the built-in limit. Looks at
    // the scan INI's switch at every call, and logs it.
    int32_t InBytes(IGateway& gateway);

  private:
    static constexpr int32_t kBuiltInK = 5120;

    int32_t InK(IGateway& gateway);

    int32_t m_limitInK = kBuiltInK;
    bool m_read = false;
};

}  // namespace wrb
