// A debug library that remembers what it was told, for the test that loads it.
#include <cstdint>
#include <string>

#define EXPORTED extern "C" __declspec(dllexport)

namespace {
std::wstring told;
}

EXPORTED int SD_InitDebug_with_Ini_0200(const char* ini, const char* second, const char* third) {
    told = L"init ";
    for (const char* text : {ini, second, third}) {
        told += L"<" + std::wstring(text, text + std::char_traits<char>::length(text)) + L">";
    }
    return 0;
}

EXPORTED void SD_TraceW_0200(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text) {
    told = L"trace " + std::wstring(sourceFile) + L" " + std::to_wstring(line) + L" " + std::to_wstring(level) + L" " +
           text;
}

// For the test: the last of the above.
EXPORTED const wchar_t* Told() {
    return told.c_str();
}
