// The log-upload ticket: how many agents upload firewall logs at once.
//
// An agent asks before it uploads. It is admitted at once, or told in how many seconds to ask again. It is released
// when its log is stored, or by the first clean-up after its time is over. docs/settings.md has the keys,
// docs/operating.md explains the log lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "Clock.h"
#include "LiveState.h"
#include "SRWLock.h"
#include "TicketSettings.h"

namespace wrb {

// Times are whole seconds of the monotonic clock; log lines show calendar seconds. A client counts by the first 36
// characters of its uid, and each list has at most 65,536 clients. Settings are unsigned and are read through the
// caches at every use; the two thread numbers are read once. Any thread. The lock is held while logging and reading
// settings, so neither may call back.
class LogTicket {
  public:
    // Gets the lists after each change, with the lock held.
    using Publisher = std::function<void(const LiveUploads& uploads)>;

    // All must outlive the ticket.
    LogTicket(const IClock& clock, CINICache& scanIni, CINICache& serverIni, Publisher publish = nullptr)
        : m_clock(clock), m_settings(scanIni, serverIni), m_publish(std::move(publish)) {}
    LogTicket(const LogTicket&) = delete;
    LogTicket& operator=(const LogTicket&) = delete;

    // The seconds to wait before asking again; 0: upload now.
    int32_t Request(const std::wstring& uid) WRB_EXCLUDES(m_lock);

    // Takes the client off both lists. True when it was waiting, and always while the ticket is not in force.
    bool Release(const std::wstring& uid) WRB_EXCLUDES(m_lock);

  private:
    // From a client's uid to the end of its upload slot, or to the time at which it is to come back.
    using ClientList = std::map<std::wstring, int64_t>;

    struct Limits {
        std::size_t free;
        std::size_t ahead;
    };

    const TicketThreads& Threads() WRB_REQUIRES(m_lock);
    uint32_t Setting(TicketSetting setting) WRB_REQUIRES(m_lock);
    int32_t Decide(const std::wstring& uid) WRB_REQUIRES(m_lock);
    bool IsFull(const std::wstring& uid) const WRB_REQUIRES(m_lock);
    int32_t TurnAway(const std::wstring& uid) WRB_REQUIRES(m_lock);
    Limits ReadLimits() WRB_REQUIRES(m_lock);
    int32_t WaitingTime() WRB_REQUIRES(m_lock);
    int32_t Admit(const std::wstring& uid, int64_t now, const wchar_t* lineFormat) WRB_REQUIRES(m_lock);
    int32_t PutOff(const std::wstring& uid, int64_t now, int32_t waitingTime) WRB_REQUIRES(m_lock);
    void CleanUp(int64_t now) WRB_REQUIRES(m_lock);
    void Publish() WRB_REQUIRES(m_lock);

    const IClock& m_clock;
    const TicketSettings m_settings;
    const Publisher m_publish;
    CWrbSRWLock m_lock;
    ClientList m_uploading WRB_GUARDED_BY(m_lock);
    ClientList m_waiting WRB_GUARDED_BY(m_lock);
    std::optional<int64_t> m_lastCleanUp WRB_GUARDED_BY(m_lock);
    std::optional<TicketThreads> m_threads WRB_GUARDED_BY(m_lock);
};

}  // namespace wrb

// The process's one ticket, over the system's clock and the server's INI files; its lists are never stored.
// `waitingSeconds` is what Request returns; the result is always true.
bool cmdhl_RequestToUploadPFWLog(const std::wstring& uid, int32_t& waitingSeconds);
bool cmdhl_RemoveClientFromLogUploadingList(const std::wstring& uid);
