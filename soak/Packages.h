// The packages that agents upload, made once and copied for each upload.
#pragma once

#include <string>
#include <vector>

namespace wrb::soak {

struct Package {
    std::wstring path;
    unsigned records = 0;
};

// Makes everything in that folder; throws std::runtime_error.
class Packages {
  public:
    explicit Packages(const std::wstring& folder);

    const std::vector<Package>& Firewall() const { return m_firewall; }  // of both record versions
    const std::wstring& Spyware() const { return m_spyware; }
    const std::wstring& Broken() const { return m_broken; }  // no cabinet

    static constexpr wchar_t kSpywareEntry[] = L"spyware.ini";
    static constexpr unsigned kSpywareSections = 2;  // that are recorded in the feedback log

  private:
    std::vector<Package> m_firewall;
    std::wstring m_spyware;
    std::wstring m_broken;
};

}  // namespace wrb::soak
