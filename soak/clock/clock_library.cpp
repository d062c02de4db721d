// The command library with a calendar clock that can be stepped. The host loads it with --dll; soak_clock.def hands all
// calls on to the command library itself. No program can set a clock for one process alone, so the library's import of
// the system's clock is replaced.
#include <windows.h>

#include <cstring>

#include "ClockStep.h"
#include "cmdhl.h"

namespace wrb::soak {
namespace {

constexpr wchar_t kLibrary[] = L"libCmdHndlrClient.dll";
constexpr int64_t kUnitsOfASecond = 10'000'000;

void WINAPI SteppedTime(FILETIME* time) {
    static const ClockStep step;
    GetSystemTimeAsFileTime(time);
    ULARGE_INTEGER units{{time->dwLowDateTime, time->dwHighDateTime}};
    units.QuadPart += static_cast<ULONGLONG>(step.Seconds() * kUnitsOfASecond);
    *time = {units.LowPart, units.HighPart};
}

template <typename Type>
Type* At(HMODULE module, ULONGLONG offset) {
    return reinterpret_cast<Type*>(reinterpret_cast<char*>(module) + offset);
}

void Replace(IMAGE_THUNK_DATA& entry, void (*function)()) {
    DWORD before = 0;
    if (VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &before)) {
        entry.u1.Function = reinterpret_cast<ULONGLONG>(function);
        VirtualProtect(&entry, sizeof entry, before, &before);
    }
}

// Replaces a function that the module imports by name, whichever DLL it comes from.
void ReplaceImport(HMODULE module, const char* name, void (*function)()) {
    const auto* const dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* const head = At<IMAGE_NT_HEADERS>(module, static_cast<ULONGLONG>(dos->e_lfanew));
    const DWORD imports = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports); from->Name != 0; ++from) {
        const auto* names = At<IMAGE_THUNK_DATA>(module, from->OriginalFirstThunk);
        for (auto* entry = At<IMAGE_THUNK_DATA>(module, from->FirstThunk); names->u1.AddressOfData != 0;
             ++names, ++entry) {
            if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
                std::strcmp(At<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData)->Name, name) == 0) {
                Replace(*entry, function);
            }
        }
    }
}

}  // namespace
}  // namespace wrb::soak

extern "C" bool soak_Initialize(const wchar_t* debugIni, const wchar_t* debugLibrary, void* reserved) {
    const HMODULE library = LoadLibraryW(wrb::soak::kLibrary);
    wrb::soak::ReplaceImport(library, "GetSystemTimeAsFileTime",
                             reinterpret_cast<void (*)()>(reinterpret_cast<void*>(wrb::soak::SteppedTime)));
    const auto initialize =
        reinterpret_cast<cmdhl_InitializeFn>(reinterpret_cast<void*>(GetProcAddress(library, "cmdhl_Initialize")));
    return initialize(debugIni, debugLibrary, reserved);
}
