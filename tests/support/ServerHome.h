// A server home folder of its own for a test: empty, entered in the registry for as long as the object lives. There is
// one such entry on a machine: a test that uses it is registered as SERIAL.
#pragma once

#include <windows.h>

#include "HomeFolder.h"
#include "TempFolder.h"

namespace wrb::test {

class ServerHome {
  public:
    ServerHome() { Set(m_folder.Path()); }
    ~ServerHome() {
        if (m_before.empty()) {
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue);
        } else {
            Set(m_before);
        }
    }

    std::filesystem::path operator/(const std::wstring& name) const { return m_folder / name; }

    // Makes the folders on the way, too.
    void Write(const std::wstring& name, const std::string& bytes) const {
        std::filesystem::create_directories((m_folder / name).parent_path());
        WriteAll(m_folder / name, bytes);
    }

    // The entry is a number, no text.
    void SpoilEntry() const {
        const DWORD number = 1;
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, REG_DWORD, &number, sizeof number);
    }

  private:
    static constexpr wchar_t kKey[] = L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information";
    static constexpr wchar_t kValue[] = L"Local_Path";

    static void Set(const std::wstring& path) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, REG_SZ, path.c_str(),
                        static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    }

    const std::wstring m_before = ReadLocalPath();
    TempFolder m_folder;
};

}  // namespace wrb::test
