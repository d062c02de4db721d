// The section "Firewall Alert" of the scan INI, with defaults and bounds applied. docs/settings.md has the keys.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AlertWindow.h"
#include "INICache.h"

namespace wrb {

enum class MailSecurity : uint32_t {
    None,
    StartTls,  // required: without it nothing is sent
    Tls,       // from the first byte
};

struct MailServer {
    std::string host;  // empty: none is set
    uint32_t port;
    MailSecurity security;
    std::string user;       // empty: no authentication
    std::wstring password;  // as the file has it: plain, or protected (StringProtection.h)
};

// Every call reads through the cache, which must outlive the object. Any thread.
class AlertSettings {
  public:
    explicit AlertSettings(CINICache& scanIni) : m_scanIni(scanIni) {}

    bool IsEnabled() const;
    AlertLimits Limits() const;
    bool WritesEvents() const;
    bool SendsMail() const;

    std::string MailFrom() const;  // always a valid address: without one in the file, "warrenby@" this computer
    std::vector<std::string> MailTo() const;  // the valid addresses, at most 100
    MailServer Server() const;

  private:
    uint32_t Number(const wchar_t* key, int32_t defaultValue) const;
    std::wstring Text(const wchar_t* key) const;

    CINICache& m_scanIni;
};

// The name of this computer in the DNS, with its domain; "localhost" when the system does not tell.
std::wstring ComputerName();

}  // namespace wrb
