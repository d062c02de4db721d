// Protection of single texts on their way to agents, under the key that the server INI has for them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Clock.h"
#include "Compiler.h"
#include "SRWLock.h"
#include "StringProtection.h"

namespace wrb {

// The key as the server INI has it now; nothing when there is none, or a text that is not one.
std::optional<ProtectionKey> ReadProtectionKey();

// How many answers were withheld because there is no key, for one log line an hour. Any thread.
class WithheldAnswers {
  public:
    explicit WithheldAnswers(const IClock& clock = SystemClock()) : m_clock(clock) {}

    // Counts an answer. The number to log, this one included: those since the last line; 0 when it is not yet time.
    uint32_t Add() noexcept;

  private:
    const IClock& m_clock;
    CWrbSRWLock m_lock;
    uint32_t m_count WRB_GUARDED_BY(m_lock) = 0;
    std::optional<uint32_t> m_logged WRB_GUARDED_BY(m_lock);  // tick of the last line
};

// The texts of one answer. An answer of which one text cannot be protected must not go out: an agent keeps what it has
// rather than get its lists in the clear, or get none. One thread.
class AgentProtection {
  public:
    // `caller` begins the log lines.
    explicit AgentProtection(const wchar_t* caller) : m_caller(caller) {}

    // The key is read for the first text. The result is empty after a failure, which is logged.
    std::wstring Protect(std::wstring_view text);

    bool Failed() const noexcept { return m_failed; }

  private:
    void Start();

    const wchar_t* const m_caller;
    std::optional<StringProtection> m_protection;
    bool m_failed = false;
};

}  // namespace wrb
