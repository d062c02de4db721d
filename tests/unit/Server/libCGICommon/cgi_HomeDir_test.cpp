#include "cgi_HomeDir.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>

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
        const std::wstring before = wrb::ReadLocalPath();
        if (!before.empty()) {
            m_before = before;
        }
    }
    ~HomeDir() override {
        if (m_before) {
            Set(*m_before);
        } else {
            Remove();
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
    std::optional<std::wstring> m_before;
};

TEST_F(HomeDir, IsTheInstalledFolderOrElseTheProgramsOwn) {
    const std::wstring program = ProgramFolder();
    const std::wstring longest = L"C:\\" + std::wstring(255, L'x');  // 258, and the backslash
    const struct {
        std::wstring value;
        DWORD type;
        std::wstring home;
    } cases[] = {
        {L"C:\\Server", REG_SZ, L"C:\\Server\\"},
        {L"C:\\Server\\", REG_SZ, L"C:\\Server\\"},
        {L"C:\\", REG_SZ, L"C:\\"},
        {L"", REG_SZ, program},
        {L"C:\\Server", REG_BINARY, program},
        {std::wstring(L"C:\\A\0B", 6), REG_SZ, L"C:\\A\\"},
        {longest, REG_SZ, longest + L"\\"},
        {longest + L"x", REG_SZ, program},
        {std::wstring(3000, L'x'), REG_SZ, program},
    };
    for (const auto& home : cases) {
        Set(home.value, home.type);
        EXPECT_EQ(cgi_GetHomeDir(), home.home) << home.value.size();
    }
    Remove();
    EXPECT_EQ(cgi_GetHomeDir(), program);
}

TEST_F(HomeDir, TheBufferFormNeverCuts) {
    Set(L"C:\\Server");
    wchar_t buffer[16];
    for (const uint32_t capacity : {11u, 16u}) {
        EXPECT_TRUE(cgi_GetHomeDir(buffer, capacity));
        EXPECT_STREQ(buffer, L"C:\\Server\\");
    }
    for (const uint32_t capacity : {1u, 10u}) {
        EXPECT_FALSE(cgi_GetHomeDir(buffer, capacity));
        EXPECT_STREQ(buffer, L"");
    }
    EXPECT_FALSE(cgi_GetHomeDir(buffer, 0));
    EXPECT_FALSE(cgi_GetHomeDir(nullptr, 260));
}

}  // namespace
