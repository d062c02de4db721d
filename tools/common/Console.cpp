#include "Console.h"

#include <windows.h>

#include "Text.h"

namespace wrb {
namespace {

void Print(DWORD stream, std::string_view utf8) {
    const HANDLE handle = GetStdHandle(stream);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        return;
    }
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(handle, &mode)) {
        const std::wstring text = Utf8ToWide(utf8);
        WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    while (!utf8.empty() && WriteFile(handle, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr)) {
        utf8.remove_prefix(written);
    }
}

}  // namespace

void PrintOut(std::string_view utf8) {
    Print(STD_OUTPUT_HANDLE, utf8);
}
void PrintErr(std::string_view utf8) {
    Print(STD_ERROR_HANDLE, utf8);
}

}  // namespace wrb
