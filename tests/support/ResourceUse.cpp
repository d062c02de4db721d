#include "ResourceUse.h"

#include <windows.h>

#include <psapi.h>

#include <vector>

namespace wrb::test {
namespace {

using QuerySystemInformation = LONG WINAPI(ULONG kind, void* buffer, ULONG bytes, ULONG* needed);
constexpr ULONG kExtendedHandleInformation = 64;  // the system's header lacks it

// The answer, in words of 64 bits: the number of rows, a reserved word, and for each open handle of the system a row
// of object, process, handle, and two words of smaller fields.
uint32_t CountInSystemList(uint64_t process) {
    auto* const query = reinterpret_cast<QuerySystemInformation*>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    static_assert(sizeof(void*) == 8);
    std::vector<uint64_t> words(1u << 15);
    while (query(kExtendedHandleInformation, words.data(), static_cast<ULONG>(words.size() * 8), nullptr) != 0 &&
           words.size() < 1u << 24) {
        words.resize(words.size() * 2);
    }
    uint32_t count = 0;
    for (std::size_t row = 0; row < words[0]; ++row) {
        count += words[2 + row * 5 + 1] == process;
    }
    return count;
}

}  // namespace

ResourceUse CurrentResourceUse(void* process) {
    const HANDLE of = process == nullptr ? GetCurrentProcess() : process;
    DWORD handles = 0;
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(of, &memory, sizeof memory);
    // Wine knows the call but always answers 0.
    if (!GetProcessHandleCount(of, &handles) || handles == 0) {
        handles = CountInSystemList(GetProcessId(of));
    }
    return {handles, memory.PagefileUsage};
}

}  // namespace wrb::test
