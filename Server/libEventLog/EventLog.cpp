#include "EventLog.h"

#include <windows.h>

#include <vector>

#include "Handle.h"

namespace wrb {
namespace {

struct EventSourceTraits {
    using Type = HANDLE;
    static HANDLE Empty() noexcept { return nullptr; }
    static void Close(HANDLE source) noexcept { DeregisterEventSource(source); }
};

// By the severity in the two highest bits of the id.
WORD EventType(uint32_t id) {
    constexpr WORD kTypes[] = {EVENTLOG_SUCCESS, EVENTLOG_INFORMATION_TYPE, EVENTLOG_WARNING_TYPE, EVENTLOG_ERROR_TYPE};
    return kTypes[id >> 30];
}

std::vector<const wchar_t*> Pointers(std::span<const std::wstring> texts) {
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& text : texts) {
        pointers.push_back(text.c_str());
    }
    return pointers;
}

}  // namespace

uint32_t WriteEvent(const wchar_t* source, uint32_t id, std::span<const std::wstring> texts) {
    const UniqueHandle<EventSourceTraits> log(RegisterEventSourceW(nullptr, source));
    if (!log) {
        return GetLastError();
    }
    std::vector<const wchar_t*> pointers = Pointers(texts);
    const BOOL done = ReportEventW(log.Get(), EventType(id), 0, id, nullptr, static_cast<WORD>(pointers.size()), 0,
                                   pointers.data(), nullptr);
    return done ? ERROR_SUCCESS : GetLastError();
}

std::wstring EventText(uint32_t id, std::span<const std::wstring> texts) {
    std::vector<const wchar_t*> pointers = Pointers(texts);
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY;
    LocalMemory memory;
    const DWORD characters =
        FormatMessageW(kFlags, GetModuleHandleW(nullptr), id, 0, reinterpret_cast<LPWSTR>(memory.Receive()), 0,
                       reinterpret_cast<va_list*>(const_cast<wchar_t**>(pointers.data())));
    std::wstring text(static_cast<const wchar_t*>(memory.Get()), characters);
    text.resize(text.find_last_not_of(L"\r\n") + 1);
    return text;
}

}  // namespace wrb
