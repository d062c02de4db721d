// A stand-in for the command library, to see what the host does with what a library may throw at it. The message's
// text says what it does.
#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

static int g_started = 0;

extern "C" __declspec(dllexport) bool cmdhl_Initialize(const wchar_t* debugIni, const wchar_t*, void*) {
    if (debugIni != nullptr && std::wstring(debugIni) == L"throw") {
        throw std::runtime_error("cannot start");
    }
    ++g_started;
    return false;
}

extern "C" __declspec(dllexport) unsigned cmdhl_Process(const wchar_t* message, unsigned long long bytes) {
    const std::wstring text(message, static_cast<std::size_t>(bytes / sizeof(wchar_t)));
    if (text == L"CMDHL_STD\tfield") {
        throw std::runtime_error("a standard exception");
    }
    if (text == L"CMDHL_INT" || text == L"CMDHL_\x1B[31mLOUD") {
        throw 42;
    }
    if (text == L"CMDHL_ODD" && bytes != 19) {
        return 0;
    }
    if (text.find(L"\twaits") != std::wstring::npos) {  // until the test lets it go
        const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, L"wrb_hostile_test_release");
        WaitForSingleObject(event, INFINITE);
        CloseHandle(event);
    }
    if (text == L"CMDHL_FAULT\tfield") {
        *static_cast<volatile int*>(nullptr) = 1;
    }
    if (text == L"CMDHL_ABORT\tfield") {
        std::abort();
    }
    if (text == L"CMDHL_STUCK") {
        Sleep(INFINITE);
    }
    return g_started == 1 && text != L"CMDHL_UNKNOWN" ? 1u : 0u;
}

extern "C" __declspec(dllexport) bool cmdhl_Finalize() {
    --g_started;
    return false;
}

#ifndef WRB_TEST_LACKS_AN_EXPORT
extern "C" __declspec(dllexport) bool cmdhl_ReloadDebugSetting(const wchar_t*, const wchar_t*) {
    return false;
}
#endif
