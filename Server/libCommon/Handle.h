// Move-only owners of operating-system objects: one alias a kind, each with its own "empty" value and closer.
//
// An owner closes what it holds when it is destroyed, reset or assigned to. Closing keeps the thread's last error, so
// a caller may still read the cause of a failure after its owners have gone out of scope. An owner belongs to one
// thread at a time.
#pragma once

#include <windows.h>

#include <utility>

namespace wrb {

template <typename Traits>
class UniqueHandle {
  public:
    using Type = typename Traits::Type;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Type value) noexcept : m_value(value) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_value(other.Release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { Reset(); }

    Type Get() const noexcept { return m_value; }
    explicit operator bool() const noexcept { return m_value != Traits::Empty(); }

    // Gives the object up without closing it.
    [[nodiscard]] Type Release() noexcept { return std::exchange(m_value, Traits::Empty()); }

    void Reset(Type value = Traits::Empty()) noexcept {
        Type old = std::exchange(m_value, value);
        if (old != Traits::Empty()) {
            const DWORD error = GetLastError();
            Traits::Close(old);
            SetLastError(error);
        }
    }

    // For functions that return an object through a pointer: closes what is held, then offers the empty slot.
    [[nodiscard]] Type* Receive() noexcept {
        Reset();
        return &m_value;
    }

  private:
    Type m_value = Traits::Empty();
};

struct KernelObjectTraits {
    using Type = HANDLE;
    static HANDLE Empty() noexcept { return nullptr; }
    static void Close(HANDLE handle) noexcept { CloseHandle(handle); }
};

struct FileTraits {
    using Type = HANDLE;
    static HANDLE Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(HANDLE handle) noexcept { CloseHandle(handle); }
};

struct SearchTraits {
    using Type = HANDLE;
    static HANDLE Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(HANDLE search) noexcept { FindClose(search); }
};

struct ViewTraits {
    using Type = void*;
    static void* Empty() noexcept { return nullptr; }
    static void Close(void* view) noexcept { UnmapViewOfFile(view); }
};

struct ModuleTraits {
    using Type = HMODULE;
    static HMODULE Empty() noexcept { return nullptr; }
    static void Close(HMODULE module) noexcept { FreeLibrary(module); }
};

struct RegistryKeyTraits {
    using Type = HKEY;
    static HKEY Empty() noexcept { return nullptr; }
    static void Close(HKEY key) noexcept { RegCloseKey(key); }
};

struct LocalMemoryTraits {
    using Type = void*;
    static void* Empty() noexcept { return nullptr; }
    static void Close(void* memory) noexcept { LocalFree(memory); }
};

using KernelHandle = UniqueHandle<KernelObjectTraits>;  // events, mutexes, timers, sections, threads, processes
using FileHandle = UniqueHandle<FileTraits>;            // files and pipes: what CreateFile and its kin return
using SearchHandle = UniqueHandle<SearchTraits>;        // what FindFirstFile and its kin return
using MappedView = UniqueHandle<ViewTraits>;
using ModuleHandle = UniqueHandle<ModuleTraits>;
using RegistryKey = UniqueHandle<RegistryKeyTraits>;
using LocalMemory = UniqueHandle<LocalMemoryTraits>;

}  // namespace wrb
