#include "MailSender.h"

#include <curl/curl.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace wrb {
namespace {

constexpr long kConnectSeconds = 30;
constexpr long kReplySeconds = 30;
constexpr long kTotalSeconds = 120;

// The first option that cannot be set is the result of the transfer.
class Transfer {
  public:
    template <typename Value>
    void Set(CURLoption option, Value value) {
        if (m_result == CURLE_OK) {
            m_result = m_handle ? curl_easy_setopt(m_handle.get(), option, value) : CURLE_OUT_OF_MEMORY;
        }
    }

    // The library does not copy the list.
    void SetRecipients(const std::vector<std::string>& addresses) {
        for (const std::string& address : addresses) {
            curl_slist* const longer = curl_slist_append(m_recipients.get(), ("<" + address + ">").c_str());
            if (longer == nullptr) {
                throw std::bad_alloc();
            }
            static_cast<void>(m_recipients.release());
            m_recipients.reset(longer);
        }
        Set(CURLOPT_MAIL_RCPT, m_recipients.get());
    }

    std::optional<std::string> Perform() {
        Set(CURLOPT_ERRORBUFFER, m_reason);
        if (m_result == CURLE_OK) {
            m_result = curl_easy_perform(m_handle.get());
        }
        if (m_result == CURLE_OK) {
            return std::nullopt;
        }
        return *m_reason != '\0' ? m_reason : curl_easy_strerror(m_result);
    }

  private:
    template <auto Close>
    struct Closer {
        template <typename Object>
        void operator()(Object* object) const {
            Close(object);
        }
    };

    char m_reason[CURL_ERROR_SIZE] = "";
    std::unique_ptr<curl_slist, Closer<curl_slist_free_all>> m_recipients;
    std::unique_ptr<CURL, Closer<curl_easy_cleanup>> m_handle{curl_easy_init()};
    CURLcode m_result = CURLE_OK;
};

std::size_t ReadText(char* buffer, std::size_t size, std::size_t count, void* context) {
    std::string_view& rest = *static_cast<std::string_view*>(context);
    const std::size_t bytes = rest.copy(buffer, size * count);
    rest.remove_prefix(bytes);
    return bytes;
}

int OnProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return (*static_cast<const std::function<bool()>*>(context))() ? 1 : 0;
}

void SetServer(Transfer& transfer, const OutgoingMail& mail) {
    const MailServer& server = mail.server;
    const std::string scheme = server.security == MailSecurity::Tls ? "smtps://" : "smtp://";
    transfer.Set(CURLOPT_URL, (scheme + server.host).c_str());
    transfer.Set(CURLOPT_PORT, static_cast<long>(server.port));
    transfer.Set(CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    transfer.Set(CURLOPT_PROXY, "");  // whatever the environment says
    if (server.security == MailSecurity::StartTls) {
        transfer.Set(CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    }
    // A list of revoked certificates that cannot be fetched must not keep alerts back.
    transfer.Set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
    if (!server.user.empty()) {
        transfer.Set(CURLOPT_USERNAME, server.user.c_str());
        transfer.Set(CURLOPT_PASSWORD, mail.password.c_str());
    }
}

void SetDeadlines(Transfer& transfer, const std::function<bool()>& cancelled) {
    transfer.Set(CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    transfer.Set(CURLOPT_SERVER_RESPONSE_TIMEOUT, kReplySeconds);
    transfer.Set(CURLOPT_TIMEOUT, kTotalSeconds);
    transfer.Set(CURLOPT_NOPROGRESS, 0L);
    transfer.Set(CURLOPT_XFERINFOFUNCTION, &OnProgress);
    transfer.Set(CURLOPT_XFERINFODATA, &cancelled);
    transfer.Set(CURLOPT_QUICK_EXIT, 1L);  // a look-up in the DNS that hangs is left alone
}

}  // namespace

std::optional<std::string> SendMail(const OutgoingMail& mail, const std::function<bool()>& cancelled) {
    std::string_view rest = mail.text;
    Transfer transfer;
    SetServer(transfer, mail);
    SetDeadlines(transfer, cancelled);
    transfer.Set(CURLOPT_MAIL_FROM, ("<" + mail.from + ">").c_str());
    transfer.SetRecipients(mail.to);
    transfer.Set(CURLOPT_MAIL_RCPT_ALLLOWFAILS, 1L);  // one address that is gone must not silence the others
    transfer.Set(CURLOPT_UPLOAD, 1L);
    transfer.Set(CURLOPT_READFUNCTION, &ReadText);
    transfer.Set(CURLOPT_READDATA, &rest);
    return transfer.Perform();
}

MailLibrary::MailLibrary() {
    if (const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT); result != CURLE_OK) {
        throw std::runtime_error(curl_easy_strerror(result));
    }
}

MailLibrary::~MailLibrary() {
    curl_global_cleanup();
}

}  // namespace wrb
