// One overlapped operation at a time on one handle.
//
// The object must outlive nothing: when it is destroyed with an operation under way, it cancels that operation and
// waits for the system to let go of the buffers. Buffers passed to an operation must outlive the object. One thread.
#pragma once

#include <windows.h>

#include "Handle.h"

namespace wrb {

enum class IoOutcome { Done, Stopped, TimedOut, Failed };

class COverlappedIo {
  public:
    // `handle` is borrowed. A missing event shows as ERROR_INVALID_HANDLE of the first operation.
    explicit COverlappedIo(HANDLE handle);
    ~COverlappedIo();
    COverlappedIo(const COverlappedIo&) = delete;
    COverlappedIo& operator=(const COverlappedIo&) = delete;

    // Start an operation. False: it failed at once, GetLastError tells. An operation that the system finished at once
    // counts as started too; Wait then returns without waiting.
    bool BeginConnect();
    bool BeginRead(void* buffer, DWORD capacity);
    bool BeginWrite(const void* data, DWORD size);

    // Waits for the operation, for `stopEvent` (null: none) and for at most `milliseconds`. An operation that is
    // finished wins over the others. Stopped and TimedOut leave it under way: wait again or Cancel. After Done, Bytes
    // and Error tell the result: Error is 0, or ERROR_MORE_DATA when a read filled its buffer. Failed: Error tells.
    IoOutcome Wait(HANDLE stopEvent, DWORD milliseconds);

    // Cancels and waits. The operation may have finished in the meantime: Done or Failed, as Wait. Without an operation
    // under way it does nothing.
    IoOutcome Cancel();

    DWORD Bytes() const { return m_bytes; }
    DWORD Error() const { return m_error; }

  private:
    void Arm();
    bool Started(BOOL finished);
    IoOutcome Collect(BOOL wait);
    IoOutcome Settled() const;

    HANDLE m_handle;
    CKernelHandle m_event;
    OVERLAPPED m_overlapped{};
    bool m_pending = false;
    DWORD m_bytes = 0;
    DWORD m_error = 0;
};

}  // namespace wrb
