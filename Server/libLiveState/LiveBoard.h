// The shared memory that holds the live state: who writes it and who reads it.
#pragma once

#include <mutex>
#include <optional>

#include "Handle.h"
#include "LiveState.h"

namespace wrb {

// The writing side; one object in a process. Any thread. Where the section cannot be made, nothing is shown.
class LiveBoard {
  public:
    LiveBoard() noexcept;
    LiveBoard(const LiveBoard&) = delete;
    LiveBoard& operator=(const LiveBoard&) = delete;

    void Show(const LiveUploads& uploads) noexcept;
    void Show(const LiveAlerts& alerts) noexcept;

  private:
    template <typename Part>
    void Write(Part LiveState::*part, const Part& value) noexcept;

    std::mutex m_lock;
    KernelHandle m_section;
    MappedView m_view;
};

// The board of this process, made on first use and never destroyed.
LiveBoard& TheLiveBoard() noexcept;

// What is shown now; nothing when no process shows anything, or one of another version.
std::optional<LiveState> ReadLiveState();

}  // namespace wrb
