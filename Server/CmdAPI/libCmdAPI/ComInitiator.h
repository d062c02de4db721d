// Keeps COM initialised on this thread for as long as the object lives.
#pragma once

#include <windows.h>

#include <objbase.h>

namespace UTIL {

// Belongs to one thread. When the thread runs COM in another model already, that one stays, and log lines say so; COM
// is given back only by an object whose own initialisation succeeded.
class CComInitiator {
  public:
    explicit CComInitiator(DWORD threadModel);  // COINIT_MULTITHREADED or COINIT_APARTMENTTHREADED
    ~CComInitiator();
    CComInitiator(const CComInitiator&) = delete;
    CComInitiator& operator=(const CComInitiator&) = delete;

  private:
    HRESULT m_status;
};

}  // namespace UTIL
