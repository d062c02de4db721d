// CWrbyPerfMonMgr: owner of the performance counters that the server's processes share, and of the mutex that guards
// them. This is an open replacement of the server's counter library, with the same file name libPerfWrbyPerfMonMgr.dll.
//
// One instance a process. All state lives in the library. Any thread may call anything, but every block must be
// released before UnInitialize, which unmaps it. Nothing here throws. Users do not handle references and mutex
// themselves: CounterScope.h does it for them.
#pragma once

#include <windows.h>

#include <cstdint>

#include "HandlerCounterBlock.h"

#if defined(WRB_PERFMON_BUILD)
#define WRB_PERFMON_API __declspec(dllexport)
#else
#define WRB_PERFMON_API __declspec(dllimport)
#endif

class WRB_PERFMON_API CWrbyPerfMonMgr {
  public:
    // The counter instance of the command handlers.
    static constexpr uint32_t kHandlerInstance = 1;

    // Null before the first Initialize and after CloseSingleton.
    static CWrbyPerfMonMgr* GetInstance() noexcept;

    // Makes the instance when there is none, attaches to the shared block, which is made when no process has made it
    // yet, and sets its counters to zero unless another process is attached. False when that failed (last error:
    // ERROR_REVISION_MISMATCH for a section that is no block of this version): the instance exists all the same and
    // gives no block, so that callers go on uncounted. May be repeated.
    static bool Initialize() noexcept;

    // Detaches; the block lives on while another process holds it.
    void UnInitialize() noexcept;

    // Detaches and makes GetInstance null until the next Initialize.
    static void CloseSingleton() noexcept;

    // The block of counter instance 1, with a reference taken and its in-use flag set; null for any other instance or
    // while detached. The reference goes back under the mutex: wrb::ReleaseCounterReference.
    HandlerCounterBlock* GetCounterInstance(uint32_t instance) noexcept;

    // The mutex of the block, owned by the manager; null while detached.
    HANDLE GetMutex() const noexcept;

    CWrbyPerfMonMgr(const CWrbyPerfMonMgr&) = delete;
    CWrbyPerfMonMgr& operator=(const CWrbyPerfMonMgr&) = delete;

  private:
    CWrbyPerfMonMgr() = default;
    ~CWrbyPerfMonMgr() = default;
};
