// A debug library as a host may have one: it hands each call on to the test that loaded it.
#include <cstdint>

using Note = void (*)(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text, const char* ini);
static Note g_note = nullptr;

extern "C" {

__declspec(dllexport) void NoteCalls(Note note) {
    g_note = note;
}

__declspec(dllexport) int SD_InitDebug_with_Ini_0200(const char* iniPath, const char*, const char*) {
    if (g_note != nullptr) {
        g_note(nullptr, 0, 0, nullptr, iniPath);
    }
    return 0;
}

__declspec(dllexport) void SD_TraceW_0200(const wchar_t* sourceFile, uint32_t line, uint32_t level,
                                          const wchar_t* text) {
    g_note(sourceFile, line, level, text, nullptr);
}
}
