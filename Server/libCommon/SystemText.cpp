#include "SystemText.h"

#include <windows.h>

#include "Handle.h"
#include "Text.h"

namespace wrb {

std::string SystemText(uint32_t error) {
    const std::string number = "error " + std::to_string(error);
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    LocalMemory memory;
    const DWORD characters =
        FormatMessageW(kFlags, nullptr, error, 0, reinterpret_cast<LPWSTR>(memory.Receive()), 0, nullptr);
    if (characters == 0) {
        return number;
    }
    std::wstring text(static_cast<const wchar_t*>(memory.Get()), characters);
    text.resize(text.find_last_not_of(L". \r\n") + 1);
    return WideToUtf8(text) + " (" + number + ")";
}

}  // namespace wrb
