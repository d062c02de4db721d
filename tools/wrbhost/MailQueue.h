// The mails that wait in the mail folder: when each is tried, and what follows a failure.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "Clock.h"
#include "MailFolder.h"

namespace wrb {

// A mail is tried when it is found, and after each failure again in 1, 5, 15 and 60 minutes. Then it is marked as
// failed, with one line at level E. The attempts are counted in memory: a new queue begins anew. One thread.
class MailQueue {
  public:
    // Sends a mail. Nothing: the server has accepted it; else the reason why not, for the log.
    using Send = std::function<std::optional<std::string>(const std::string& text)>;

    // `clock` must outlive the queue.
    MailQueue(const MailFolder& folder, const IClock& clock, Send send)
        : m_folder(folder), m_clock(clock), m_send(std::move(send)) {}

    // Tries the mails whose time has come, oldest first; none more once `stopping` is true. A mail that
    // fails while it is true stays as it was.
    void Work(const std::function<bool()>& stopping);

  private:
    struct Attempts {
        std::size_t failed = 0;
        int64_t nextSecond = 0;  // on the monotonic clock
        bool accepted = false;   // sent, but the file could not be deleted
    };

    void Try(const std::wstring& file, Attempts& attempts, const std::function<bool()>& stopping);
    void NoteFailure(const std::wstring& file, Attempts& attempts, const std::string& reason);

    const MailFolder m_folder;
    const IClock& m_clock;
    const Send m_send;
    std::map<std::wstring, Attempts> m_attempts;  // by file name
};

}  // namespace wrb
