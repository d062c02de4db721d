#include "HomeFolder.h"

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "ServerHome.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information";

TEST(HomeDir, IsTheInstalledFolderOrElseTheProgramsOwn) {
    const wrb::test::ServerHome restored;
    const std::wstring program = wrb::test::ProgramFolder();
    const std::wstring longest = L"C:\\" + std::wstring(255, L'x');  // 258, and the backslash
    const std::tuple<std::wstring, DWORD, std::wstring> cases[] = {
        {L"C:\\Server", REG_SZ, L"C:\\Server\\"}, {L"C:\\Server\\", REG_SZ, L"C:\\Server\\"},
        {L"C:\\Server", REG_BINARY, program},     {std::wstring(L"C:\\A\0B", 6), REG_SZ, L"C:\\A\\"},
        {longest, REG_SZ, longest + L"\\"},       {longest + L"x", REG_SZ, program},
    };
    for (const auto& [value, type, home] : cases) {
        const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Local_Path", type, value.c_str(), bytes), ERROR_SUCCESS);
        EXPECT_EQ(wrb::HomeFolder(), home) << value.size();
    }
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Local_Path");
    EXPECT_EQ(wrb::HomeFolder(), program);
}

}  // namespace
