#include "CabinetWriter.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <fci.h>
#include <fcntl.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kCabinetName[] = "cabinet";
constexpr std::string_view kScratch = "scratch";
constexpr INT_PTR kFailed = -1;
constexpr ULONG kLargestCabinet = 0x7FFFFFFF;
constexpr USHORT kFirstDate = 0x0021;  // 1980-01-01: the same files make the same cabinet

// One cabinet being written. FCI takes only narrow file names: it gets numbers as names; this object maps them to wide
// paths.
struct Writing {
    const std::wstring& cabinet;
    const std::vector<CabinetSource>& sources;
    std::vector<std::wstring> scratch = {};
    DWORD error = 0;  // of the first call that failed
    ERF writer = {};  // errors of the writer itself
};

INT_PTR Note(Writing& writing, DWORD error, INT_PTR result) {
    writing.error = writing.error == 0 ? error : writing.error;
    return result;
}

std::size_t IndexIn(std::string_view digits) {
    std::size_t index = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), index);
    return index;
}

const std::wstring& PathOf(const Writing& writing, std::string_view name) {
    return name.starts_with(kScratch) ? writing.scratch[IndexIn(name.substr(kScratch.size()))] : writing.cabinet;
}

HANDLE Handle(INT_PTR file) {
    return reinterpret_cast<HANDLE>(file);
}

INT_PTR OpenPath(Writing& writing, const std::wstring& path, DWORD access, DWORD creation) {
    const HANDLE file =
        CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE ? reinterpret_cast<INT_PTR>(file) : Note(writing, GetLastError(), kFailed);
}

INT_PTR DIAMONDAPI Open(char* name, int flags, int, int*, void* context) {
    auto& writing = *static_cast<Writing*>(context);
    return OpenPath(writing, PathOf(writing, name), GENERIC_READ | GENERIC_WRITE,
                    (flags & _O_CREAT) != 0 ? CREATE_ALWAYS : OPEN_EXISTING);
}

// A source's name is its number.
INT_PTR DIAMONDAPI OpenSource(char* name, USHORT* date, USHORT* time, USHORT* attributes, int*, void* context) {
    auto& writing = *static_cast<Writing*>(context);
    const CabinetSource& source = writing.sources[IndexIn(name)];
    const bool isAscii = std::ranges::all_of(source.name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    *date = kFirstDate;
    *time = 0;
    *attributes = static_cast<USHORT>(_A_ARCH | (isAscii ? 0 : _A_NAME_IS_UTF));
    return OpenPath(writing, source.path, GENERIC_READ, OPEN_EXISTING);
}

UINT DIAMONDAPI Read(INT_PTR file, void* buffer, UINT count, int*, void* context) {
    DWORD read = 0;
    if (ReadFile(Handle(file), buffer, count, &read, nullptr)) {
        return read;
    }
    return static_cast<UINT>(Note(*static_cast<Writing*>(context), GetLastError(), kFailed));
}

UINT DIAMONDAPI Write(INT_PTR file, void* buffer, UINT count, int*, void* context) {
    DWORD written = 0;
    if (WriteFile(Handle(file), buffer, count, &written, nullptr)) {
        return written;
    }
    return static_cast<UINT>(Note(*static_cast<Writing*>(context), GetLastError(), kFailed));
}

int DIAMONDAPI Close(INT_PTR file, int*, void*) {
    return CloseHandle(Handle(file)) ? 0 : -1;
}

long DIAMONDAPI Seek(INT_PTR file, long distance, int origin, int*, void*) {
    static_assert(SEEK_SET == FILE_BEGIN && SEEK_CUR == FILE_CURRENT && SEEK_END == FILE_END);
    return static_cast<long>(SetFilePointer(Handle(file), distance, nullptr, static_cast<DWORD>(origin)));
}

int DIAMONDAPI Delete(char* name, int*, void* context) {
    return DeleteFileW(PathOf(*static_cast<Writing*>(context), name).c_str()) ? 0 : -1;
}

// Makes a file with a new, unique name. Returns the system error, 0 for none.
DWORD MakeFile(const wchar_t* folder, std::wstring& path) {
    wchar_t name[MAX_PATH + 1] = L"";
    if (GetTempFileNameW(folder, L"cab", 0, name) == 0) {
        return GetLastError();
    }
    path = name;
    return 0;
}

DWORD MakeScratch(std::vector<std::wstring>& scratch) {
    wchar_t folder[MAX_PATH + 1] = L"";
    if (GetTempPathW(MAX_PATH, folder) == 0) {
        return GetLastError();
    }
    std::wstring path;
    const DWORD error = MakeFile(folder, path);
    if (error == 0) {
        scratch.push_back(std::move(path));
    }
    return error;
}

BOOL DIAMONDAPI NewScratch(char* name, int capacity, void* context) {
    auto& writing = *static_cast<Writing*>(context);
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    try {
        error = MakeScratch(writing.scratch);
    } catch (const std::bad_alloc&) {  // must not reach FCI, which is C
    }
    if (error != 0) {
        Note(writing, error, kFailed);
        return FALSE;
    }
    std::snprintf(name, static_cast<std::size_t>(capacity), "%s%u", kScratch.data(),
                  static_cast<unsigned>(writing.scratch.size() - 1));
    return TRUE;
}

void* DIAMONDAPI Allocate(ULONG bytes) {
    return std::malloc(bytes);
}
void DIAMONDAPI Free(void* memory) {
    std::free(memory);
}
int DIAMONDAPI OnPlaced(PCCAB, char*, long, BOOL, void*) {
    return 0;
}
// Called for a second cabinet, when the data is too large for the first.
BOOL DIAMONDAPI RefuseNext(PCCAB, ULONG, void*) {
    return FALSE;
}
long DIAMONDAPI OnStatus(UINT, ULONG, ULONG, void*) {
    return 0;
}

struct CloseFci {
    void operator()(void* fci) const noexcept { FCIDestroy(fci); }
};
using Fci = std::unique_ptr<void, CloseFci>;

bool AddAll(HFCI fci, const std::vector<CabinetSource>& sources) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
        std::string number = std::to_string(i);
        std::string name = sources[i].name;
        if (!FCIAddFile(fci, number.data(), name.data(), FALSE, RefuseNext, OnStatus, OpenSource, tcompTYPE_MSZIP)) {
            return false;
        }
    }
    return true;
}

bool WriteAll(Writing& writing) {
    CCAB parameters = {};
    parameters.cb = parameters.cbFolderThresh = kLargestCabinet;
    std::memcpy(parameters.szCab, kCabinetName, sizeof kCabinetName);
    const Fci fci(FCICreate(&writing.writer, OnPlaced, Allocate, Free, Open, Read, Write, Close, Seek, Delete,
                            NewScratch, &parameters, &writing));
    return fci && AddAll(fci.get(), writing.sources) && FCIFlushCabinet(fci.get(), FALSE, RefuseNext, OnStatus);
}

}  // namespace

void WriteCabinet(const std::wstring& path, const std::vector<CabinetSource>& sources) {
    const auto isTooLong = [](const CabinetSource& source) { return source.name.size() >= CB_MAX_FILENAME; };
    if (std::ranges::any_of(sources, isTooLong)) {
        throw std::runtime_error("the name of an entry is too long");
    }
    // In the same folder, so that a rename can replace the old file.
    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/") + 1);
    std::wstring unfinished;
    if (const DWORD error = MakeFile(folder.empty() ? L"." : folder.c_str(), unfinished); error != 0) {
        throw std::runtime_error("no file can be made beside it: " + SystemText(error));
    }
    Writing writing{unfinished, sources};
    const bool isWritten = WriteAll(writing);
    // The writer deletes them itself unless it fails.
    for (const std::wstring& scratch : writing.scratch) {
        DeleteFileW(scratch.c_str());
    }
    if (!isWritten || !MoveFileExW(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        Note(writing, isWritten ? GetLastError() : 0, kFailed);
        DeleteFileW(unfinished.c_str());
        throw std::runtime_error("the cabinet cannot be written (cabinet error " +
                                 std::to_string(writing.writer.erfOper) + "): " + SystemText(writing.error));
    }
}

}  // namespace wrb
