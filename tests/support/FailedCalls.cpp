#include "FailedCalls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <type_traits>

#include "ResourceUse.h"

namespace wrb::test {
namespace {

struct State {
    std::atomic<long> untilFailure{0};  // 0: it has happened, or none is wanted
    DWORD thread = 0;
    FailsOn where = FailsOn::ThisThread;
    void* original = nullptr;
    std::vector<void**> slots;  // of the import table
} state;

bool IsDue() {
    const bool counts = (GetCurrentThreadId() == state.thread) == (state.where == FailsOn::ThisThread);
    return counts && state.untilFailure > 0 && --state.untilFailure == 0;
}

// What stands in the table instead; `failure` is what the function returns when it fails.
template <int64_t failure, typename Result, typename... Arguments>
struct Standin {
    static Result WINAPI Call(Arguments... arguments) {
        if (!IsDue()) {
            return reinterpret_cast<Result(WINAPI*)(Arguments...)>(state.original)(arguments...);
        }
        SetLastError(FailedCall::kError);
        if constexpr (std::is_pointer_v<Result>) {
            return reinterpret_cast<Result>(static_cast<intptr_t>(failure));
        } else {
            return static_cast<Result>(failure);
        }
    }
};

template <int64_t failure, typename Result, typename... Arguments>
void* StandinFor(Result(WINAPI*)(Arguments...)) {
    return reinterpret_cast<void*>(&Standin<failure, Result, Arguments...>::Call);
}

void* StandinFor(const std::string& name) {
#define WRB_ROW(function, failure) \
    { #function, StandinFor < failure>(static_cast <decltype(&::function)>(nullptr)) }
    const struct {
        const char* name;
        void* standin;
    } kFunctions[] = {
        WRB_ROW(ConnectNamedPipe, 0),
        WRB_ROW(CreateEventW, 0),
        WRB_ROW(CreateFileMappingW, 0),
        WRB_ROW(CreateFileW, -1),
        WRB_ROW(CreateIoCompletionPort, 0),
        WRB_ROW(CreateMutexW, 0),
        WRB_ROW(CreateNamedPipeW, -1),
        WRB_ROW(CreateWaitableTimerW, 0),
        WRB_ROW(MapViewOfFile, 0),
        WRB_ROW(PostQueuedCompletionStatus, 0),
        WRB_ROW(ReadFile, 0),
        WRB_ROW(SetFileCompletionNotificationModes, 0),
        WRB_ROW(SetNamedPipeHandleState, 0),
        WRB_ROW(SetWaitableTimer, 0),
        WRB_ROW(WaitForMultipleObjects, 0xFFFFFFFF),
        WRB_ROW(WriteFile, 0),
    };
#undef WRB_ROW
    for (const auto& row : kFunctions) {
        if (name == row.name) {
            return row.standin;
        }
    }
    throw std::invalid_argument("no stand-in for " + name);
}

// The places where this program keeps the address of that function.
std::vector<void**> Slots(const std::string& name) {
    auto* const base = reinterpret_cast<uint8_t*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    std::vector<void**> slots;
    for (; import->Name != 0; ++import) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* address = reinterpret_cast<void**>(base + import->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++address) {
            if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                const auto* entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
                if (name == reinterpret_cast<const char*>(entry->Name)) {
                    slots.push_back(address);
                }
            }
        }
    }
    return slots;
}

void Fill(void* function) {
    for (void** slot : state.slots) {
        DWORD before = 0;
        EXPECT_TRUE(VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &before));
        std::atomic_ref(*slot).store(function);
        VirtualProtect(slot, sizeof *slot, before, &before);
    }
}

}  // namespace

FailedCall::FailedCall(const std::string& function, unsigned nth, FailsOn where) {
    void* const standin = StandinFor(function);
    state.slots = Slots(function);
    if (state.slots.empty()) {
        throw std::invalid_argument("the program does not call " + function);
    }
    state.original = *state.slots.front();
    state.thread = GetCurrentThreadId();
    state.where = where;
    state.untilFailure = static_cast<long>(nth);
    Fill(standin);
}

FailedCall::~FailedCall() {
    state.untilFailure = 0;
    Fill(state.original);
}

bool FailedCall::Happened() const {
    return state.untilFailure == 0;
}

namespace {

// The system frees the stack of a peer's thread, of a megabyte or more, some time after the thread has ended.
constexpr std::size_t kNoiseBytes = 4u << 20;

unsigned FailEachCallOnce(const std::vector<std::string>& functions, FailsOn where, const std::function<void()>& work,
                          const std::function<void()>& check) {
    unsigned failures = 0;
    for (const std::string& function : functions) {
        bool happened = true;
        for (unsigned nth = 1; happened && !testing::Test::HasFailure(); ++nth) {
            SCOPED_TRACE(function + " " + std::to_string(nth));
            {
                const FailedCall failed(function, nth, where);
                work();
                happened = failed.Happened();
            }
            failures += happened ? 1 : 0;
            check();
        }
    }
    return failures;
}

}  // namespace

unsigned FailEachCall(const std::vector<std::string>& functions, FailsOn where, const std::function<void()>& work,
                      const std::function<void()>& check) {
    unsigned failures = FailEachCallOnce(functions, where, work, check);
    ResourceUse before{};
    ResourceUse after = CurrentResourceUse();
    // A leak grows with each pass. What another thread makes once and keeps, such as a spare event, does not.
    for (int pass = 0; pass < 3 && (pass == 0 || after.handles > before.handles); ++pass) {
        before = after;
        failures += FailEachCallOnce(functions, where, work, check);
        after = CurrentResourceUse();
        for (int i = 0; i < 500 && after.handles > before.handles; ++i) {  // a peer's thread may not be done yet
            Sleep(10);
            after = CurrentResourceUse();
        }
    }
    EXPECT_LE(after.handles, before.handles);
    EXPECT_LT(after.committedBytes, before.committedBytes + kNoiseBytes);
    return failures;
}

}  // namespace wrb::test
