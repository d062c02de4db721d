#include "MailDelivery.h"

#include <chrono>
#include <exception>

#include "DebugLog.h"
#include "HomeFolder.h"
#include "ProtectionKeyFile.h"
#include "StringProtection.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::chrono::seconds kPoll{2};
constexpr uint32_t kExpirySeconds = 6;

// A text without the mark of protection is the password itself.
std::optional<std::string> PlainPassword(const std::wstring& text, const std::wstring& serverIni) {
    if (!text.starts_with(kProtectedPrefix)) {
        return WideToUtf8(text);
    }
    const auto key = ReadProtectionKey(serverIni);
    const auto plain = key ? StringProtection(*key).Unprotect(text) : std::nullopt;
    return plain ? std::optional(WideToUtf8(*plain)) : std::nullopt;
}

}  // namespace

MailDelivery::MailDelivery(const std::wstring& homeFolder)
    : m_serverIni(homeFolder + kServerIniFile),
      m_folder(homeFolder),
      m_queue(m_folder, SystemClock(), [this](const std::string& text) { return Send(text); }) {
    m_scanIni.init((homeFolder + kScanIniFile).c_str(), kExpirySeconds);
}

void MailDelivery::Start() {
    m_threads.Start(1, [this] { Run(); });
}

void MailDelivery::Run() noexcept {
    std::unique_lock lock(m_lock);
    while (!m_finishing) {
        lock.unlock();
        try {
            m_queue.Work([this] { return IsFinishing(); });
        } catch (const std::exception& error) {
            WRB_LOG(kLogError, L"%s - %S", L"MailDelivery", error.what());
        }
        lock.lock();
        m_changed.wait_for(lock, kPoll, [this] { return m_finishing; });
    }
}

std::optional<std::string> MailDelivery::Send(const std::string& text) {
    const MailServer server = m_settings.Server();
    if (server.host.empty()) {
        return "[Firewall Alert] SmtpServer is empty";
    }
    const std::vector<std::string> to = m_settings.MailTo();
    if (to.empty()) {
        return "[Firewall Alert] MailTo has no valid address";
    }
    const std::optional<std::string> password = PlainPassword(server.password, m_serverIni);
    if (!password) {
        return "[Firewall Alert] SmtpPassword is not protected with the key of the server INI";
    }
    return SendMail({server, *password, m_settings.MailFrom(), to, text}, [this] { return IsFinishing(); });
}

bool MailDelivery::IsFinishing() {
    const std::lock_guard guard(m_lock);
    return m_finishing;
}

}  // namespace wrb
