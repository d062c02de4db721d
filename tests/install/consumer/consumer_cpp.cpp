#include <cmdhl.h>

#include <string_view>
#include <type_traits>

// The types for binding at run time must not drift from the functions.
static_assert(std::is_same_v<cmdhl_InitializeFn, decltype(&cmdhl_Initialize)>);
static_assert(std::is_same_v<cmdhl_ProcessFn, decltype(&cmdhl_Process)>);
static_assert(std::is_same_v<cmdhl_FinalizeFn, decltype(&cmdhl_Finalize)>);
static_assert(std::is_same_v<cmdhl_ReloadDebugSettingFn, decltype(&cmdhl_ReloadDebugSetting)>);

int main() {
    cmdhl_Initialize(L"", L"", nullptr);
    const std::wstring_view message = L"CMDHL_CLEAR_INI_CACHE";
    const unsigned ran = cmdhl_Process(message.data(), message.size() * sizeof(wchar_t));
    cmdhl_Finalize();
    return ran == 1 ? 0 : 1;
}
