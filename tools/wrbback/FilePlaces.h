// How many messages whose body is in a file a service takes in at a time.
//
// Another program may hold such a file. Opening and deleting it then take ten seconds each (SpillDirectory.h), so a
// worker does that, never the reading thread, and a bounded number of workers.
#pragma once

#include <atomic>

#include "JobQueue.h"

namespace wrb {

class FilePlaces {
  public:
    explicit FilePlaces(unsigned most) : m_most(most) {}

    // `work` as a job, which has a place from now on until it goes away. Nothing: all places are taken. Any thread; the
    // job must not outlive this.
    Job Admit(Job work);

  private:
    const unsigned m_most;
    std::atomic<unsigned> m_taken{0};
};

// Why a message that got no place is refused.
inline constexpr wchar_t kNoFilePlace[] = L"too many messages with files are under way";

}  // namespace wrb
