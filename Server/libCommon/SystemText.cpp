#include "SystemText.h"

#include <windows.h>

#include "Handle.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kMostWindowsError = 0xFFFF;

// Empty: `source`, one of the flags FORMAT_MESSAGE_FROM_..., has no text.
std::wstring Message(uint32_t error, DWORD source, HMODULE module) {
    LocalMemory memory;
    const DWORD characters = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | source,
                                            module, error, 0, reinterpret_cast<LPWSTR>(memory.Receive()), 0, nullptr);
    std::wstring text(static_cast<const wchar_t*>(memory.Get()), characters);
    text.resize(text.find_last_not_of(L". \r\n") + 1);
    return text;
}

}  // namespace

std::string SystemText(uint32_t error) {
    const std::string number =
        "error " + WideToUtf8(FormatWide(error > kMostWindowsError ? L"0x%08X" : L"%u", static_cast<unsigned>(error)));
    std::wstring text = Message(error, FORMAT_MESSAGE_FROM_SYSTEM, nullptr);
    if (text.empty() && error > kMostWindowsError) {  // ntdll has the texts of NTSTATUS
        text = Message(error, FORMAT_MESSAGE_FROM_HMODULE, GetModuleHandleW(L"ntdll.dll"));
    }
    return text.empty() ? number : WideToUtf8(text) + " (" + number + ")";
}

}  // namespace wrb
