#include "cgi_HomeDir.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "Handle.h"
#include "ServerRegistry.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information";

// Changes "Local_Path" for one test and puts back what was there.
class HomeDir : public testing::Test {
  protected:
    HomeDir() {
        const LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0,
                                               KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, m_key.Receive(), nullptr);
        EXPECT_EQ(status, ERROR_SUCCESS);
    }
    ~HomeDir() override {
        Remove();
        if (!m_before.empty()) {
            Set(m_before);
        }
    }

    void Set(const std::wstring& text, DWORD type = REG_SZ) {
        const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
        ASSERT_EQ(
            RegSetValueExW(m_key.Get(), L"Local_Path", 0, type, reinterpret_cast<const BYTE*>(text.c_str()), bytes),
            ERROR_SUCCESS);
    }
    void Remove() { RegDeleteValueW(m_key.Get(), L"Local_Path"); }

    static std::wstring ProgramFolder() {
        wchar_t path[MAX_PATH];
        const std::wstring whole(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
        return whole.substr(0, whole.rfind(L'\\') + 1);
    }

  private:
    wrb::CRegistryKey m_key;
    const std::wstring m_before = wrb::ReadLocalPath();
};

TEST_F(HomeDir, IsTheInstalledFolderOrElseTheProgramsOwn) {
    const std::wstring program = ProgramFolder();
    const std::wstring longest = L"C:\\" + std::wstring(255, L'x');  // 258, and the backslash
    const struct {
        std::wstring value;
        DWORD type;
        std::wstring home;
    } cases[] = {
        {L"C:\\Server", REG_SZ, L"C:\\Server\\"}, {L"C:\\Server\\", REG_SZ, L"C:\\Server\\"},
        {L"C:\\Server", REG_BINARY, program},     {std::wstring(L"C:\\A\0B", 6), REG_SZ, L"C:\\A\\"},
        {longest, REG_SZ, longest + L"\\"},       {longest + L"x", REG_SZ, program},
    };
    for (const auto& home : cases) {
        Set(home.value, home.type);
        EXPECT_EQ(cgi_GetHomeDir(), home.home) << home.value.size();
    }
    Remove();
    EXPECT_EQ(cgi_GetHomeDir(), program);
}

}  // namespace
