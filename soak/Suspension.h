// A process that is stopped where it stands, and continued.
#pragma once

#include <windows.h>

#include <map>

#include "Handle.h"

namespace wrb::soak {

// All threads of the process are suspended from construction to destruction.
class Suspension {
  public:
    explicit Suspension(DWORD process);
    ~Suspension();
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;

  private:
    bool SuspendNewThreads(DWORD process);

    std::map<DWORD, KernelHandle> m_threads;  // by their ids
};

}  // namespace wrb::soak
