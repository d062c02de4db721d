#include "cmdhl_LogTicket.h"

#include <algorithm>
#include <limits>

#include "AgentUid.h"
#include "DebugLog.h"

namespace wrb {
namespace {

constexpr wchar_t kRequest[] = L"cmdhl_RequestToUploadPFWLog";
constexpr wchar_t kRelease[] = L"cmdhl_RemoveClientFromLogUploadingList";
constexpr wchar_t kCleanList[] = L"CleanList";

constexpr int32_t kShortWait = 60;            // below it a client is admitted early
constexpr int64_t kWaitingGrace = 60;         // how late a waiting client may come back
constexpr std::size_t kMostClients = 65'536;  // of a list

// The log's %d takes 32 bits.
template <typename Number>
int32_t Logged(Number number) {
    return static_cast<int32_t>(number);
}

template <typename ClientList>
void CleanList(ClientList& clients, int64_t earliest, int64_t latest) {
    WRB_LOG(kLogDebug, L"%s - >>", kCleanList);
    const auto removed = std::erase_if(clients, [earliest, latest](const auto& client) {
        return client.second <= earliest || client.second > latest;
    });
    WRB_LOG(kLogDebug, L"%s - [LogTicket] Remove client(%d)  <<", kCleanList, Logged(removed));
}

// The first clients of a list, with calendar times: `offset` is the calendar second 0 of the list's clock.
template <typename ClientList>
void ShowClients(const ClientList& clients, int64_t offset, std::array<LiveClient, kLiveClients>& shown) {
    auto place = shown.begin();
    for (const auto& [uid, until] : clients) {
        if (place == shown.end()) {
            break;
        }
        uid.copy(place->uid, std::size(place->uid) - 1);
        place->until = until + offset;
        ++place;
    }
}

}  // namespace

const TicketThreads& LogTicket::Threads() {
    if (!m_threads) {
        m_threads = m_settings.Threads();
    }
    return *m_threads;
}

uint32_t LogTicket::Setting(TicketSetting setting) {
    return m_settings.Read(setting, Threads());
}

int32_t LogTicket::Request(const std::wstring& uid) {
    if (uid.size() > kUidCharacters) {
        return Request(uid.substr(0, kUidCharacters));
    }
    WRB_LOG(kLogDebug, L"%s - >>", kRequest);
    if (!m_settings.IsInForce()) {
        return 0;
    }
    int32_t waitingTime = 0;
    {
        const ExclusiveGuard guard(m_lock);
        waitingTime = Decide(uid);
        Publish();
    }
    WRB_LOG(kLogDebug, L"%s - <<", kRequest);
    return waitingTime;
}

int32_t LogTicket::Decide(const std::wstring& uid) {
    const int64_t now = m_clock.MonotonicSeconds();
    if (const auto held = m_uploading.find(uid); held != m_uploading.end()) {
        WRB_LOG(kLogWarning,
                L"%s - [LogTicket] the client is in uploading list already, remove and put it into waiting list for "
                L"log uploading slot occupied.",
                kRequest);
        m_uploading.erase(held);
        return PutOff(uid, now, WaitingTime());
    }
    CleanUp(now);
    const Limits limits = ReadLimits();
    if (m_uploading.size() < limits.free) {
        return Admit(uid, now,
                     L"%s - [LogTicket] put the client into uploading list GUID(%s), current time(%d) timeout(%d)");
    }
    const int32_t waitingTime = WaitingTime();
    if (m_uploading.size() < limits.ahead && waitingTime < kShortWait) {
        return Admit(uid, now,
                     L"%s - [LogTicket] (upload prearation) put the client into uploading list GUID(%s), current "
                     L"time(%d) upload timeout(%d)");
    }
    return PutOff(uid, now, waitingTime);
}

LogTicket::Limits LogTicket::ReadLimits() {
    const TicketThreads& threads = Threads();
    const uint32_t free = Setting(TicketSetting::Free);
    const uint32_t ahead = Setting(TicketSetting::Ahead);
    WRB_LOG(kLogInfo,
            L"%s - [LogTicket] dwStaticThreadNum(%d), dwMaxThreadNum(%d), dwConcurrentUploadingNum(%d), "
            L"dwMaxConcurrentUploadingNum(%d), uploadinglist(%d), waitinglist(%d)",
            kRequest, threads.fixed, threads.maximum, free, ahead, Logged(m_uploading.size()),
            Logged(m_waiting.size()));
    return {std::min<std::size_t>(free, kMostClients), std::min<std::size_t>(ahead, kMostClients)};
}

// By the length of the queue alone: a client's own place in it does not count.
int32_t LogTicket::WaitingTime() {
    const uint32_t ceiling = Setting(TicketSetting::MaxWaitTime);
    const uint32_t wait = static_cast<uint32_t>(m_waiting.size()) / Setting(TicketSetting::Rate) + 1;
    return static_cast<int32_t>(std::min(ceiling, wait));
}

int32_t LogTicket::Admit(const std::wstring& uid, int64_t now, const wchar_t* lineFormat) {
    const uint32_t uploadTime = Setting(TicketSetting::UploadTime);
    const int64_t calendar = m_clock.CalendarSeconds();
    WRB_LOG(kLogInfo, lineFormat, kRequest, uid.c_str(), Logged(calendar), Logged(calendar + uploadTime));
    m_uploading.insert_or_assign(uid, now + uploadTime);
    m_waiting.erase(uid);
    return 0;
}

bool LogTicket::IsFull(const std::wstring& uid) const {
    return m_waiting.size() >= kMostClients && !m_waiting.contains(uid);
}

int32_t LogTicket::TurnAway(const std::wstring& uid) {
    constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
    const auto longest = static_cast<int32_t>(std::min(Setting(TicketSetting::MaxWaitTime), kMost));
    WRB_LOG(kLogWarning, L"%s - [LogTicket] the waiting list is full GUID(%s), nWaitingTime(%d)", kRequest, uid.c_str(),
            longest);
    return longest;
}

int32_t LogTicket::PutOff(const std::wstring& uid, int64_t now, int32_t waitingTime) {
    if (IsFull(uid)) {
        return TurnAway(uid);
    }
    WRB_LOG(kLogInfo, L"%s - [LogTicket] put the client into waiting list GUID(%s), current time(%d) nWaitingTime(%d)",
            kRequest, uid.c_str(), Logged(m_clock.CalendarSeconds()), waitingTime);
    m_waiting.insert_or_assign(uid, now + waitingTime);
    return waitingTime;
}

void LogTicket::Publish() {
    if (!m_publish) {
        return;
    }
    LiveUploads uploads;
    uploads.changed = m_clock.CalendarSeconds();
    const int64_t offset = uploads.changed - m_clock.MonotonicSeconds();
    uploads.uploading = static_cast<uint32_t>(m_uploading.size());
    uploads.waiting = static_cast<uint32_t>(m_waiting.size());
    ShowClients(m_uploading, offset, uploads.firstUploading);
    ShowClients(m_waiting, offset, uploads.firstWaiting);
    m_publish(uploads);
}

void LogTicket::CleanUp(int64_t now) {
    if (m_lastCleanUp && now - *m_lastCleanUp <= Setting(TicketSetting::CleanUpInterval)) {
        return;
    }
    CleanList(m_uploading, now, now + Setting(TicketSetting::UploadTime));
    CleanList(m_waiting, now - kWaitingGrace, now + Setting(TicketSetting::MaxWaitTime));
    m_lastCleanUp = now;
}

bool LogTicket::Release(const std::wstring& uid) {
    if (uid.size() > kUidCharacters) {
        return Release(uid.substr(0, kUidCharacters));
    }
    if (!m_settings.IsInForce()) {
        return true;
    }
    WRB_LOG(kLogDebug, L"%s - [LogTicket] upload log finish. try to remove client[%s] from log uploading list",
            kRelease, uid.c_str());
    const ExclusiveGuard guard(m_lock);
    if (m_uploading.erase(uid) != 0) {
        WRB_LOG(kLogDebug,
                L"%s - [LogTicket] find the cleint in uploading list! remove client[%s] from log uploading list",
                kRelease, uid.c_str());
    }
    const bool wasWaiting = m_waiting.erase(uid) != 0;
    Publish();
    if (wasWaiting) {
        WRB_LOG(kLogDebug,
                L"%s - [LogTicket] error handling. find the cleint in waiting list! remove client[%s] from log "
                L"waiting list",
                kRelease, uid.c_str());
    }
    return wasWaiting;
}

}  // namespace wrb
