// Owners of an attachment to the counter block: one for the processes that count, one for those that only read.
//
// Section, mutex and event exist while any process holds them. Neither class logs; `error` is the Windows error of a
// failure.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

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
    const wchar_t* holder = kCounterHolderName;
};

class CounterSection {
  public:
    // Attaches to the block, or makes it when there is none, and sets every counter to zero unless another process is
    // attached. The objects are for the server's accounts; others may read the block (ServerAccess.h). Waits at most
    // 50 ms for the mutex and goes on without it. When the call fails, an attached object stays attached.
    CounterAttach Open(const CounterNames& names, uint32_t& error) noexcept;
    void Close() noexcept;

    HandlerCounterBlock* Block() const noexcept { return static_cast<HandlerCounterBlock*>(m_view.Get()); }
    HANDLE Mutex() const noexcept { return m_mutex.Get(); }

  private:
    CounterAttach OpenUnderMutex(const CounterNames& names, uint32_t& error) noexcept;
    CounterAttach Map(const wchar_t* name, SECURITY_ATTRIBUTES* attributes, uint32_t& error) noexcept;
    bool BecomesOnlyHolder(const wchar_t* name, SECURITY_ATTRIBUTES* attributes) noexcept;

    KernelHandle m_mutex;
    KernelHandle m_holder;
    KernelHandle m_section;
    MappedView m_view;
};

// The block that another owner has made, mapped for one kind of access.
class CounterView {
  public:
    // `access` is FILE_MAP_READ, with FILE_MAP_WRITE to change it.
    CounterAttach Attach(DWORD access, uint32_t& error, const wchar_t* sectionName) noexcept;

    // Null while not attached.
    HandlerCounterBlock* Block() const noexcept { return static_cast<HandlerCounterBlock*>(m_view.Get()); }

  private:
    KernelHandle m_section;
    MappedView m_view;
};

// Maps the block for reading only and never takes its mutex, so that a reader cannot delay the server.
class CounterReader {
  public:
    CounterAttach Attach(uint32_t& error, const wchar_t* sectionName = kCounterSectionName) noexcept {
        return m_view.Attach(FILE_MAP_READ, error, sectionName);
    }

    // While attached: the slot's counters now and its calls by run time (all zero for a slot that does not exist), the
    // calls in progress, and what could not be handed over.
    HandlerCounterSlot Slot(uint32_t index) const noexcept;
    TimeCounts Times(uint32_t index) const noexcept;
    int32_t CallsInProgress() const noexcept;
    wrb::Undelivered Undelivered() const noexcept;

    // The last hour, oldest first; empty while no host has run for an interval. Throws std::bad_alloc only.
    std::vector<CounterSample> Samples() const;

  private:
    CounterView m_view;
};

}  // namespace wrb
