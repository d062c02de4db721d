// Stand-in for the system headers in native builds: the types and the few calls that the pure modules use. It is put in
// front of every source, because it also declares what Microsoft's runtime adds to the C headers.
//
// HANDLE is a MemoryFile wherever a file is meant. Locks are real; the code pages are UTF-8 and, for the ANSI one,
// Latin-1.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <shared_mutex>

using BOOL = int;
using BYTE = uint8_t;
using DWORD = uint32_t;
using HRESULT = int32_t;
using LONG = int32_t;
using UINT = uint32_t;
using HANDLE = void*;
using HKEY = void*;
using HMODULE = void*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr int MAX_PATH = 260;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;

DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;

// ---- files ----

struct MemoryFile {
    const uint8_t* bytes;
    std::size_t size;
    std::size_t position = 0;
};

BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* read, void* overlapped) noexcept;
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) noexcept;
inline constexpr auto DeleteFileW = [](const wchar_t*) { return FALSE; };
inline constexpr auto GetFileAttributesW = [](const wchar_t*) { return INVALID_FILE_ATTRIBUTES; };

// ---- what the owners of Handle.h close; nothing here makes any ----

inline constexpr auto CloseHandle = [](HANDLE) { return TRUE; };
inline constexpr auto UnmapViewOfFile = [](const void*) { return TRUE; };
inline constexpr auto FreeLibrary = [](HMODULE) { return TRUE; };
inline constexpr auto FindClose = [](HANDLE) { return TRUE; };
inline constexpr auto RegCloseKey = [](HKEY) { return LONG{0}; };
inline constexpr auto LocalFree = [](void*) -> void* { return nullptr; };

// ---- process and clock ----

DWORD GetTickCount() noexcept;
inline uint64_t GetTickCount64() noexcept {
    return GetTickCount();
}
inline constexpr auto GetCurrentProcessId = [] { return DWORD{4711}; };
inline constexpr auto GetCurrentThreadId = [] { return DWORD{815}; };
inline constexpr auto GetModuleFileNameW = [](HMODULE, wchar_t*, DWORD) { return DWORD{0}; };

// ---- locks ----

using SRWLOCK = std::shared_mutex;
#define SRWLOCK_INIT \
    {}
inline constexpr auto AcquireSRWLockExclusive = [](SRWLOCK* lock) { lock->lock(); };
inline constexpr auto ReleaseSRWLockExclusive = [](SRWLOCK* lock) { lock->unlock(); };
inline constexpr auto AcquireSRWLockShared = [](SRWLOCK* lock) { lock->lock_shared(); };
inline constexpr auto ReleaseSRWLockShared = [](SRWLOCK* lock) { lock->unlock_shared(); };

// ---- texts ----

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 8;
inline constexpr int CSTR_LESS_THAN = 1;
inline constexpr int CSTR_EQUAL = 2;
inline constexpr int CSTR_GREATER_THAN = 3;

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, wchar_t* wide, int room) noexcept;
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int characters, char* narrow, int room,
                        const char* defaultText, BOOL* usedDefault) noexcept;
int CompareStringOrdinal(const wchar_t* left, int leftLength, const wchar_t* right, int rightLength,
                         BOOL ignoreCase) noexcept;

// ---- Microsoft's runtime ----

int _vsnwprintf(wchar_t* buffer, std::size_t room, const wchar_t* format, va_list arguments) noexcept;
int _vsnprintf(char* buffer, std::size_t room, const char* format, va_list arguments) noexcept;
uint64_t _wcstoui64(const wchar_t* text, wchar_t** end, int base) noexcept;
int localtime_s(std::tm* local, const std::time_t* seconds) noexcept;
