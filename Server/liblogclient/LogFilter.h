// The level filter of the debug log: one 32-bit word that all processes of the system share.
//
// Bit 16 of the word switches filtering on; the low 16 bits, taken as a signed number, are the threshold. Every level
// belongs to a class, every class has a rank, and with filtering on a line is admitted when its rank is at most the
// threshold. The log service sets the word, everyone else only reads it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "Handle.h"

namespace wrb {

inline constexpr wchar_t kLogFilterSection[] = L"Global\\log_level_map_file";
inline constexpr uint32_t kLogFilterOn = 0x10000;

// Ranks of the classes: the more detailed the lines, the higher the rank.
enum LogRank : int8_t {
    kRankAlways = -1,
    kRankFatal = 2,
    kRankError = 4,
    kRankWarning = 5,
    kRankInfo = 7,
    kRankDebug = 9,
};

// The rank of each level below 256, whether given as a number or as a letter. Those that are not listed rank as debug.
inline constexpr std::array<int8_t, 256> kLogRanks = [] {
    std::array<int8_t, 256> ranks{};
    ranks.fill(kRankDebug);
    ranks[0] = ranks[1] = ranks[2] = ranks['F'] = kRankFatal;
    ranks[3] = ranks[4] = ranks['E'] = kRankError;
    ranks[5] = ranks['W'] = kRankWarning;
    ranks[6] = ranks[7] = ranks['I'] = kRankInfo;
    ranks['N'] = kRankAlways;
    return ranks;
}();

// The word that admits every line of that rank and below.
constexpr uint32_t LogFilterWord(int16_t threshold) noexcept {
    return kLogFilterOn | static_cast<uint16_t>(threshold);
}

// Levels above 255 have no class and are always admitted.
constexpr bool LogFilterAdmits(uint32_t word, uint32_t level) noexcept {
    return (word & kLogFilterOn) == 0 || level >= kLogRanks.size() ||
           kLogRanks[level] <= static_cast<int16_t>(word & 0xFFFF);
}

// The shared word, mapped into this process. Where the system refuses the section (on Windows an account needs a
// privilege to create one under Global\) the object stays unmapped and admits everything.
class LogFilter {
  public:
    // The one object of the process; made on first use, whichever thread comes first, and never destroyed, so that
    // even the last lines of a dying process find it. Keeps the last error.
    static LogFilter& Shared() noexcept {
        LogFilter* const filter = s_shared.load(std::memory_order_acquire);
        return filter != nullptr ? *filter : MakeShared();
    }

    // Reads the word, without a lock: the cost of a line that is filtered out.
    bool Admits(uint32_t level) const noexcept { return LogFilterAdmits(Word(), level); }
    uint32_t Word() const noexcept { return std::atomic_ref<uint32_t>(*m_word).load(std::memory_order_relaxed); }

    // For the log service. False when the section is not mapped: then no process sees the word.
    bool Set(uint32_t word) noexcept;

    LogFilter(const LogFilter&) = delete;
    LogFilter& operator=(const LogFilter&) = delete;

  private:
    LogFilter() noexcept;
    ~LogFilter() = default;

    static LogFilter& MakeShared() noexcept;
    static std::atomic<LogFilter*> s_shared;

    uint32_t m_unmapped = 0;  // stands in for the shared word: filtering off
    uint32_t* m_word = &m_unmapped;
    KernelHandle m_section;
    MappedView m_view;
};

}  // namespace wrb
