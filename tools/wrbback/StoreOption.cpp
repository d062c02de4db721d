#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "Commands.h"
#include "Console.h"
#include "Environment.h"
#include "ExitCode.h"
#include "HomeFolder.h"
#include "SqlAddress.h"
#include "Store.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSection[] = L"INI_SERVER_SECTION";
constexpr wchar_t kKey[] = L"BackEndStore";
constexpr wchar_t kServiceStore[] = L"sqlite:Data\\agents.db";
constexpr DWORD kAddressCharacters = 4096;

std::wstring ServerIni() {
    return HomeFolder() + kServerIniFile;
}

// Empty: the file does not name a store.
std::wstring ConfiguredStore() {
    std::wstring address(kAddressCharacters, L'\0');
    address.resize(
        GetPrivateProfileStringW(kSection, kKey, L"", address.data(), kAddressCharacters, ServerIni().c_str()));
    const SqlAddress parsed = ParseSqlAddress(address);
    if (address.empty() || parsed.isOdbc) {
        return address;
    }
    return (std::filesystem::path(HomeFolder()) / parsed.target).wstring();  // a full path stays as it is
}

}  // namespace

void RequireFileName(const std::wstring& name) {
    if (name.empty() || name.starts_with(L':') || name.find(L'"') != std::wstring::npos) {
        throw std::invalid_argument("'" + WideToUtf8(name) + "' is no name of a file");
    }
}

std::string StoreOf(const std::string& option) {
    const std::string named = option.empty() ? WideToUtf8(ReadEnvironment(L"WRB_STORE").value_or(L"")) : option;
    const std::string store = named.empty() ? StoreOfService() : named;
    if (const SqlAddress address = ParseSqlAddress(Utf8ToWide(store)); !address.isOdbc) {
        RequireFileName(address.target);
    }
    return store;
}

std::string StoreOfService() {
    const std::wstring configured = ConfiguredStore();
    return configured.empty() ? kDefaultDatabase : WideToUtf8(configured);
}

int SettleServiceStore() {
    const std::wstring ini = ServerIni();
    if (ConfiguredStore().empty() && !WritePrivateProfileStringW(kSection, kKey, kServiceStore, ini.c_str())) {
        const DWORD error = GetLastError();
        return Fail("cannot write the store of the service into " + WideToUtf8(ini) + ": " + SystemText(error),
                    kExitFailed);
    }
    const std::wstring address = ConfiguredStore();
    try {
        CreateStore(address);
    } catch (const SqlError& error) {
        PrintErr("wrbback: the store is not there yet: " + std::string(error.what()) + "\n");
    }
    PrintOut("wrbback: its store is " + ParseSqlAddress(address).name + "\n");
    return kExitOk;
}

}  // namespace wrb
