#include "AlertSettings.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "IniValues.h"
#include "MailText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSection[] = L"Firewall Alert";
constexpr std::size_t kMostRecipients = 100;  // what every mail server has to accept
constexpr int32_t kDefaultWindow = 3600;
constexpr int32_t kLongestWindow = 24 * 60 * 60;
constexpr uint32_t kSmtpPort = 25;

}  // namespace

bool AlertSettings::IsEnabled() const {
    return Number(L"Enable", 0) != 0;
}

AlertLimits AlertSettings::Limits() const {
    const auto window = static_cast<int32_t>(Number(L"WindowInSec", kDefaultWindow));
    return {static_cast<uint32_t>(window < 1 ? kDefaultWindow : std::min(window, kLongestWindow)),
            {Number(L"IntrusionThreshold", 0), Number(L"RuleThreshold", 0), Number(L"TotalThreshold", 0)}};
}

bool AlertSettings::WritesEvents() const {
    return Number(L"EventLog", 1) != 0;
}

bool AlertSettings::SendsMail() const {
    return Number(L"Mail", 0) != 0;
}

std::string AlertSettings::MailFrom() const {
    for (const std::wstring& text : {Text(L"MailFrom"), L"warrenby@" + ComputerName()}) {
        if (std::vector<std::string> addresses = MailAddresses(text); !addresses.empty()) {
            return std::move(addresses.front());
        }
    }
    return "warrenby@localhost";
}

std::vector<std::string> AlertSettings::MailTo() const {
    std::vector<std::string> addresses = MailAddresses(Text(L"MailTo"));
    if (addresses.size() > kMostRecipients) {
        addresses.resize(kMostRecipients);
    }
    return addresses;
}

MailServer AlertSettings::Server() const {
    const uint32_t port = Number(L"SmtpPort", kSmtpPort);
    const uint32_t security = Number(L"SmtpSecurity", 0);
    return {WideToUtf8(Text(L"SmtpServer")), port >= 1 && port <= 65535 ? port : kSmtpPort,
            // A number that nobody knows must not mean less than encryption.
            security <= 2 ? static_cast<MailSecurity>(security) : MailSecurity::StartTls, WideToUtf8(Text(L"SmtpUser")),
            Text(L"SmtpPassword")};
}

uint32_t AlertSettings::Number(const wchar_t* key, int32_t defaultValue) const {
    return m_scanIni.readINIInt(kSection, key, defaultValue);
}

std::wstring AlertSettings::Text(const wchar_t* key) const {
    return ReadIniText(m_scanIni, kSection, key);
}

std::wstring ComputerName() {
    wchar_t name[256];
    auto capacity = static_cast<DWORD>(std::size(name));
    return GetComputerNameExW(ComputerNameDnsFullyQualified, name, &capacity) ? name : L"localhost";
}

}  // namespace wrb
