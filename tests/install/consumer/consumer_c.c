#include <cmdhl.h>

int main(void) {
    static const wchar_t message[] = L"CMDHL_CLEAR_INI_CACHE";
    bool initialized = cmdhl_Initialize(L"", L"", NULL);
    unsigned cleared = cmdhl_Process(message, sizeof message - sizeof *message);
    unsigned refused = cmdhl_Process(L"CMDHL_NO_SUCH_COMMAND", 42);
    bool reloaded = cmdhl_ReloadDebugSetting(L"", L"");
    return !initialized && cleared == 1 && refused == 0 && !reloaded && !cmdhl_Finalize() ? 0 : 1;
}
