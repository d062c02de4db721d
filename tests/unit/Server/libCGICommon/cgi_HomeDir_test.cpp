#include "cgi_HomeDir.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "ServerRegistry.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information";

void Set(const std::wstring& text, DWORD type) {
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Local_Path", type, text.c_str(), bytes), ERROR_SUCCESS);
}

TEST(HomeDir, IsTheInstalledFolderOrElseTheProgramsOwn) {
    const std::wstring before = wrb::ReadLocalPath();
    wchar_t path[MAX_PATH];
    std::wstring program(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    program.resize(program.rfind(L'\\') + 1);
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
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Local_Path");
    EXPECT_EQ(cgi_GetHomeDir(), program);
    if (!before.empty()) {
        Set(before, REG_SZ);
    }
}

}  // namespace
