// Delivers the mails that the command library stores, on a thread of its own.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

#include "AlertSettings.h"
#include "INICache.h"
#include "MailQueue.h"
#include "MailSender.h"
#include "WorkerThreads.h"

namespace wrb {

// Server, sender and recipients are those of the scan INI at the time of an attempt, not those of the file: whoever can
// write to the folder reaches nobody but the administrators.
class MailDelivery {
  public:
    explicit MailDelivery(const std::wstring& homeFolder);
    ~MailDelivery() { Stop(); }
    MailDelivery(const MailDelivery&) = delete;
    MailDelivery& operator=(const MailDelivery&) = delete;

    // Begins with what an earlier host has left.
    void Start();

    // Interrupts the mail that is being sent; it stays in the folder.
    void Stop() { m_threads.Finish(m_lock, m_finishing, m_changed); }

  private:
    void Run() noexcept;
    std::optional<std::string> Send(const std::string& text);
    bool IsFinishing();

    const std::wstring m_serverIni;
    const MailFolder m_folder;
    const MailLibrary m_library;
    CINICache m_scanIni;
    const AlertSettings m_settings{m_scanIni};
    MailQueue m_queue;
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_finishing = false;
    WorkerThreads m_threads;
};

}  // namespace wrb
