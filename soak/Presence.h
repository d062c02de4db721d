// When each thing that a command may need was away, for judging which answers had to be right.
#pragma once

#include <atomic>
#include <cstdint>

namespace wrb::soak {

// One thing: away at first, then back, away, back. While a mark is undisturbed, it has been there.
class PresenceLog {
  public:
    using Mark = uint64_t;

    Mark Now() const { return m_changes; }
    bool Undisturbed(Mark since) const { return since % 2 == 0 && since == m_changes; }

    // Whether it has been away since it was there first.
    bool EverLeft() const { return m_changes > 2; }

    void Leaves() { ++m_changes; }
    void IsBack() { ++m_changes; }

  private:
    std::atomic<Mark> m_changes{1};  // odd: away
};

struct Presence {
    struct Marks {
        PresenceLog::Mark host;
        PresenceLog::Mark backEnd;
        PresenceLog::Mark store;
    };

    Marks Now() const { return {host.Now(), backEnd.Now(), store.Now()}; }
    bool HostStayed(const Marks& since) const { return host.Undisturbed(since.host); }
    bool BackEndStayed(const Marks& since) const { return backEnd.Undisturbed(since.backEnd); }
    bool StoreStayed(const Marks& since) const { return BackEndStayed(since) && store.Undisturbed(since.store); }

    PresenceLog host;
    PresenceLog hostRuns;  // away also while the host is suspended
    PresenceLog backEnd;
    PresenceLog store;  // away while the disk is full
};

}  // namespace wrb::soak
