// The volume of the store, which the chaos fills.
#pragma once

#include <cstdint>
#include <string>

namespace wrb::soak {

class StoreDisk {
  public:
    // `folder`: of the database file.
    explicit StoreDisk(const std::wstring& folder) : m_folder(folder), m_ballast(folder + L"\\ballast") {}
    ~StoreDisk() { Release(); }
    StoreDisk(const StoreDisk&) = delete;
    StoreDisk& operator=(const StoreDisk&) = delete;

    // Whether the volume is so small that it can be filled: one of its own.
    bool CanBeFilled() const;

    // Takes all that is free now.
    void Fill() const;
    void Release() const;

  private:
    const std::wstring m_folder;
    const std::wstring m_ballast;
};

}  // namespace wrb::soak
