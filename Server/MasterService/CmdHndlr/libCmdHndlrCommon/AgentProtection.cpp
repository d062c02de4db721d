#include "AgentProtection.h"

#include <iterator>
#include <utility>

#include "DebugLog.h"
#include "INICache.h"
#include "OSException.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kLineMilliseconds = 60 * 60 * 1000;

}  // namespace

std::optional<ProtectionKey> ReadProtectionKey() {
    // One more than a key and its terminator need, so that a key that is too long shows.
    wchar_t text[sizeof(ProtectionKey) * 2 + 2] = {};
    ServerIniCache().readINIString(text, kProtectionKeySection, kProtectionKeyName, L"",
                                   static_cast<uint32_t>(std::size(text)));
    return ParseProtectionKey(text);
}

uint32_t WithheldAnswers::Add() noexcept {
    const ExclusiveGuard guard(m_lock);
    ++m_count;
    const uint32_t now = m_clock.TickMilliseconds();
    if (m_logged && now - *m_logged < kLineMilliseconds) {
        return 0;
    }
    m_logged = now;
    return std::exchange(m_count, 0);
}

void AgentProtection::Start() {
    static WithheldAnswers withheld;
    if (const auto key = ReadProtectionKey()) {
        m_protection.emplace(*key);
        return;
    }
    m_failed = true;
    if (const uint32_t count = withheld.Add(); count != 0) {
        WRB_LOG(kLogWarning,
                L"%s - the server INI has no key of 64 hexadecimal digits: [%s] %s. Answers withheld since the last "
                L"such line: %u",
                m_caller, kProtectionKeySection, kProtectionKeyName, count);
    }
}

std::wstring AgentProtection::Protect(std::wstring_view text) {
    try {
        if (!m_protection && !m_failed) {
            Start();
        }
        if (!m_failed) {
            return m_protection->Protect(text);
        }
    } catch (const OS::CException& error) {
        m_failed = true;
        WRB_LOG(kLogError, L"%s - cannot protect the addresses: %s", m_caller, Utf8ToWide(error.what()).c_str());
    }
    return {};
}

}  // namespace wrb
