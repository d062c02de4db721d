#include "ResultFile.h"

#include <limits>

#include "CancelAfter.h"
#include "DebugLog.h"
#include "SpillDirectory.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr const wchar_t* kReader = L"CMsgSerializer::ReadFile";
constexpr const wchar_t* kMapper = L"CreateIPCResultMapFile";

bool IsPlainFile(const BY_HANDLE_FILE_INFORMATION& file) {
    constexpr DWORD kNotPlain = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    return (file.dwFileAttributes & kNotPlain) == 0 && file.nNumberOfLinks <= 1;
}

}  // namespace

ResultFile::~ResultFile() {
    m_view.Reset();
    m_mapping.Reset();
    m_file.Reset();
    if (!m_path.empty()) {
        DeleteSpillFile(m_path);
    }
}

bool ResultFile::Open(const std::wstring& path) {
    m_path = AcceptedSpillPath(path);
    if (m_path.empty()) {
        WRB_LOG(kLogError, L"%s - [File mode] File refused, not in a spill directory: %s", kReader, path.c_str());
    } else if (!OpenFor(GENERIC_READ)) {
        m_path.clear();
    }
    return !m_path.empty();
}

// The link itself is opened instead of its target, so that what is checked is what was named.
bool ResultFile::OpenFor(DWORD access) {
    const CancelAfter limit(kSpillFileMilliseconds);
    m_file.Reset(CreateFileW(m_path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!m_file) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - [File mode] Failed to open %s: %s", kReader, m_path.c_str(),
                WideSystemText(error).c_str());
        return false;
    }
    return TakeSize();
}

bool ResultFile::TakeSize() {
    BY_HANDLE_FILE_INFORMATION file;
    if (!GetFileInformationByHandle(m_file.Get(), &file)) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - Failed to call stat file %S. err = %d", L"IPCResultFromFileByMemMap",
                WideToAnsi(m_path).c_str(), error);
        return false;
    }
    m_size = uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
    if (!IsPlainFile(file) || m_size > std::numeric_limits<uint32_t>::max()) {
        WRB_LOG(kLogError, L"%s - [File mode] File refused, not a plain file of less than 4 GiB: %s", kReader,
                m_path.c_str());
        return false;
    }
    return true;
}

Block ResultFile::Read() {
    WRB_LOG(kLogDebug, L"%s - [File mode] File name = %s, file size = %d", kReader, m_path.c_str(),
            static_cast<int>(m_size));
    Block block = AllocateBlock(static_cast<uint32_t>(m_size));
    DWORD read = 0;
    if (!block || !::ReadFile(m_file.Get(), block.get(), static_cast<DWORD>(m_size), &read, nullptr) ||
        read != m_size) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - [File mode] Failed to read %s: %s", kReader, m_path.c_str(),
                WideSystemText(error).c_str());
        return nullptr;
    }
    m_file.Reset();
    return block;
}

// The texts of the two failures name each other's function; readers of the log search for them as they are.
uint8_t* ResultFile::Map() {
    WRB_LOG(kLogDebug, L"%s - Use memory mapped file to read: %s", kReader, m_path.c_str());
    if (!OpenFor(GENERIC_READ | GENERIC_WRITE)) {
        return nullptr;
    }
    m_mapping.Reset(CreateFileMappingW(m_file.Get(), nullptr, PAGE_READWRITE, static_cast<DWORD>(m_size >> 32),
                                       static_cast<DWORD>(m_size), nullptr));
    if (!m_mapping) {
        WRB_LOG(kLogError, L"%s - MapViewOfFile failed! err = %d", kMapper, GetLastError());
        return nullptr;
    }
    m_view.Reset(MapViewOfFile(m_mapping.Get(), FILE_MAP_ALL_ACCESS, 0, 0, static_cast<SIZE_T>(m_size)));
    if (!m_view) {
        WRB_LOG(kLogError, L"%s - CreateFileMappingW failed! err = %d", kMapper, GetLastError());
    }
    return static_cast<uint8_t*>(m_view.Get());
}

}  // namespace wrb
