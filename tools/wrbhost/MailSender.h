// One mail to one server, by SMTP.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AlertSettings.h"

namespace wrb {

struct OutgoingMail {
    MailServer server;
    std::string password;  // plain
    std::string from;
    std::vector<std::string> to;
    std::string_view text;  // lines end in CR LF
};

// Nothing: the server has accepted the mail for one recipient at least; else the reason, for the log. It takes two
// minutes at most, and about a second once `cancelled` is true. `cancelled` is asked on this thread.
std::optional<std::string> SendMail(const OutgoingMail& mail, const std::function<bool()>& cancelled);

// The client library, for as long as mails are sent. Make and destroy it while no other thread sends.
class MailLibrary {
  public:
    MailLibrary();  // throws std::runtime_error
    ~MailLibrary();
    MailLibrary(const MailLibrary&) = delete;
    MailLibrary& operator=(const MailLibrary&) = delete;
};

}  // namespace wrb
