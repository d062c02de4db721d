#include "CrashDump.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <dbghelp.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "CommandLine.h"
#include "Handle.h"
#include "OwnModule.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kPatienceMilliseconds = 60'000;
constexpr DWORD kWriterMilliseconds = 45'000;
constexpr std::size_t kNoteCharacters = 64;
constexpr DWORD kAborted = 0x40000015;  // STATUS_FATAL_APP_EXIT

// What the thread of the fault hands over. It allocates nothing.
struct Fault {
    EXCEPTION_POINTERS* pointers = nullptr;
    DWORD thread = 0;
    wchar_t note[kNoteCharacters + 1] = L"";
};

struct Recorder {
    Recorder(std::wstring name, std::wstring place, std::function<void(const Crash&)> listener)
        : program(std::move(name)), folder(std::move(place)), tell(std::move(listener)) {}

    const std::wstring program;
    const std::wstring folder;
    const std::function<void(const Crash& crash)> tell;
    const KernelHandle wanted{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const KernelHandle done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    Fault fault;
    std::atomic<bool> taken{false};
};

// Never destroyed: a thread may crash while the program ends.
Recorder* g_recorder = nullptr;

DWORD NoteSlot() {
    static const DWORD slot = TlsAlloc();
    return slot;
}

void CopyNote(wchar_t* copy) {
    const auto* text = static_cast<const wchar_t*>(TlsGetValue(NoteSlot()));
    for (std::size_t i = 0; text != nullptr && i < kNoteCharacters && text[i] != L'\0' && text[i] != L'\t'; ++i) {
        copy[i] = text[i] < L' ' || (text[i] >= 0x7F && text[i] < 0xA0) ? L'?' : text[i];
    }
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* pointers) {
    Recorder& recorder = *g_recorder;
    if (recorder.taken.exchange(true)) {
        Sleep(INFINITE);  // another thread was first, and ends the process
    }
    recorder.fault.pointers = pointers;
    recorder.fault.thread = GetCurrentThreadId();
    CopyNote(recorder.fault.note);
    SetEvent(recorder.wanted.Get());
    WaitForSingleObject(recorder.done.Get(), kPatienceMilliseconds);
    TerminateProcess(GetCurrentProcess(), pointers->ExceptionRecord->ExceptionCode);
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int) {
    CONTEXT context{};
    RtlCaptureContext(&context);
    EXCEPTION_RECORD record{};
    record.ExceptionCode = kAborted;
    EXCEPTION_POINTERS pointers{&record, &context};
    OnCrash(&pointers);
}

// Leaves room for one more.
void DeleteOldDumps(const std::wstring& folder) {
    std::vector<std::pair<uint64_t, std::wstring>> dumps;
    WIN32_FIND_DATAW file{};
    const SearchHandle search(FindFirstFileW((folder + L"*.dmp").c_str(), &file));
    for (BOOL found = static_cast<bool>(search); found; found = FindNextFileW(search.Get(), &file)) {
        dumps.emplace_back((uint64_t{file.ftLastWriteTime.dwHighDateTime} << 32) | file.ftLastWriteTime.dwLowDateTime,
                           folder + file.cFileName);
    }
    std::ranges::sort(dumps);
    for (std::size_t i = 0; i + kMostDumps <= dumps.size(); ++i) {
        DeleteFileW(dumps[i].second.c_str());
    }
}

std::wstring DumpPath(const Recorder& recorder) {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return recorder.folder + recorder.program +
           FormatWide(L"-%04u%02u%02u-%02u%02u%02u-%u.dmp", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute,
                      now.wSecond, static_cast<unsigned>(GetCurrentProcessId()));
}

// This program writes the dump in another process, because the heap and the locks of this one may be broken. Returns 0
// or the Windows error.
DWORD RunWriter(const Fault& fault, const std::wstring& path) {
    std::wstring line = QuotedArgument(OwnModulePath()) + L" service dump";
    for (const std::wstring& argument :
         {std::to_wstring(GetCurrentProcessId()), std::to_wstring(fault.thread),
          std::to_wstring(reinterpret_cast<uintptr_t>(fault.pointers)), path, std::wstring(fault.note)}) {
        line += L" " + QuotedArgument(argument);
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION information{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                        &information)) {
        return GetLastError();
    }
    const KernelHandle thread(information.hThread);
    const KernelHandle process(information.hProcess);
    DWORD code = 0;
    if (WaitForSingleObject(process.Get(), kWriterMilliseconds) != WAIT_OBJECT_0) {
        return ERROR_TIMEOUT;
    }
    return GetExitCodeProcess(process.Get(), &code) ? code : GetLastError();
}

// The path of the dump, or why there is none.
std::wstring LeaveDump(const Recorder& recorder) {
    std::error_code ignored;
    std::filesystem::create_directories(recorder.folder, ignored);  // usually it is there
    DeleteOldDumps(recorder.folder);
    const std::wstring path = DumpPath(recorder);
    const DWORD error = RunWriter(recorder.fault, path);
    return error == ERROR_SUCCESS ? path : L"none, " + WideSystemText(error);
}

void Record(Recorder& recorder) noexcept {
    try {
        const Fault& fault = recorder.fault;
        const auto code = static_cast<unsigned>(fault.pointers->ExceptionRecord->ExceptionCode);
        const std::wstring dump = LeaveDump(recorder);
        recorder.tell({FormatWide(L"0x%08X", code), *fault.note != L'\0' ? fault.note : L"no command", dump});
    } catch (...) {
        // No memory left.
    }
}

}  // namespace

void WriteDumpOnCrash(const std::wstring& program, const std::wstring& folder,
                      std::function<void(const Crash& crash)> tell) {
    NoteSlot();
    g_recorder = new Recorder(program, folder, std::move(tell));
    std::thread([] {
        WaitForSingleObject(g_recorder->wanted.Get(), INFINITE);
        Record(*g_recorder);
        SetEvent(g_recorder->done.Get());
    }).detach();
    SetUnhandledExceptionFilter(OnCrash);
    std::signal(SIGABRT, OnAbort);
}

int WriteDump(const DumpRequest& request) {
    const KernelHandle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, request.process));
    const FileHandle file(
        CreateFileW(request.file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!process || !file) {
        return static_cast<int>(GetLastError());
    }
    std::wstring note = request.note;
    MINIDUMP_EXCEPTION_INFORMATION exception{request.thread, reinterpret_cast<EXCEPTION_POINTERS*>(request.pointers),
                                             TRUE};
    MINIDUMP_USER_STREAM comment{CommentStreamW, static_cast<ULONG>((note.size() + 1) * sizeof(wchar_t)), note.data()};
    MINIDUMP_USER_STREAM_INFORMATION comments{1, &comment};
    const auto type = static_cast<MINIDUMP_TYPE>(MiniDumpNormal | MiniDumpWithThreadInfo);
    return MiniDumpWriteDump(process.Get(), request.process, file.Get(), type, &exception, &comments, nullptr)
               ? 0
               : static_cast<int>(GetLastError());
}

CrashNote::CrashNote(const wchar_t* text) noexcept {
    TlsSetValue(NoteSlot(), const_cast<wchar_t*>(text));
}

CrashNote::~CrashNote() {
    TlsSetValue(NoteSlot(), nullptr);
}

}  // namespace wrb
