// Owners of an attachment to the counter block: one for the processes that count, one for those that only look.
//
// The section and its mutex exist while any process holds them, so a block outlives the process that made it and
// whoever attaches next goes on with its figures. Neither class logs; `error` is the Windows error behind a failure.
#pragma once

#include <windows.h>

#include <cstdint>

#include "Handle.h"
#include "HandlerCounterBlock.h"

namespace wrb {

enum class CounterAttach {
    Attached,
    Missing,  // nobody has made the block (reader only)
    Foreign,  // the section of that name is no counter block, or one of another version or size: left untouched
    Failed,   // the system refused; see the error
};

// For people: "attached", "no counter block exists", ...
const wchar_t* CounterAttachText(CounterAttach result) noexcept;

struct CounterNames {
    const wchar_t* section = kCounterSectionName;
    const wchar_t* mutex = kCounterMutexName;
};

class CounterSection {
  public:
    // Attaches to the block, making it with every counter at zero when there is none. Both objects admit every local
    // account, since the server's services run under several. Waits at most five seconds for a process that is just
    // making the block. Attached already: does nothing.
    CounterAttach Open(const CounterNames& names, uint32_t& error) noexcept;
    void Close() noexcept;

    HandlerCounterBlock* Block() const noexcept { return static_cast<HandlerCounterBlock*>(m_view.Get()); }
    HANDLE Mutex() const noexcept { return m_mutex.Get(); }

  private:
    CounterAttach MapLocked(const wchar_t* name, SECURITY_ATTRIBUTES* attributes, uint32_t& error) noexcept;

    KernelHandle m_mutex;
    KernelHandle m_section;
    MappedView m_view;
};

// Maps the block for reading only and never takes its mutex, so that a reader cannot hold the server up.
class CounterReader {
  public:
    CounterAttach Attach(uint32_t& error, const wchar_t* sectionName = kCounterSectionName) noexcept;

    // While attached: the slot's counters now (all zero for a slot that does not exist), and the calls in progress.
    HandlerCounterSlot Slot(uint32_t index) const noexcept;
    int32_t CallsInProgress() const noexcept;

  private:
    KernelHandle m_section;
    MappedView m_view;
};

}  // namespace wrb
