// How many jobs of a kind may exist at a time.
//
// The back end limits the messages whose body is in a file: another program may hold such a file, and opening and
// deleting it then take ten seconds each (SpillDirectory.h). Only some of the workers may wait for that.
#pragma once

#include <atomic>

#include "JobQueue.h"

namespace wrb {

class JobLimit {
  public:
    explicit JobLimit(unsigned most) : m_most(most) {}

    // A job that does `work` and counts until it is destroyed; nothing when there are `most` already. Any thread; the
    // job must not outlive this.
    Job Admit(Job work);

  private:
    const unsigned m_most;
    std::atomic<unsigned> m_taken{0};
};

// Why a message with a file is refused.
inline constexpr wchar_t kTooManyFiles[] = L"too many messages with files are under way";

}  // namespace wrb
