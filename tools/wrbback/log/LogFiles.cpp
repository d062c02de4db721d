#include "LogFiles.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kNumberDigits = 6;
constexpr uint64_t kLastNumber = 999'999;
constexpr uint64_t kSpaceCheckBytes = 64 * 1024;

DiskSpace DiskSpaceOf(const std::wstring& folder) {
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    if (!GetDiskFreeSpaceExW(folder.c_str(), &available, &total, nullptr)) {
        return {~0ull, 0};  // not known, so nothing is held against it
    }
    return {available.QuadPart, total.QuadPart};
}

LogFileOptions Complete(LogFileOptions options) {
    if (!options.folder.empty() && options.folder.back() != L'\\' && options.folder.back() != L'/') {
        options.folder += L'\\';
    }
    if (!options.diskSpace) {
        options.diskSpace = DiskSpaceOf;
    }
    return options;
}

// The number in NAME.NUMBER.log, or 0 for a file of another name: a number of more digits is not ours.
uint64_t NumberOf(std::wstring_view file, std::wstring_view name) {
    constexpr std::wstring_view kExtension = L".log";
    if (file.size() != name.size() + 1 + kNumberDigits + kExtension.size() || !file.starts_with(name) ||
        file[name.size()] != L'.' || !file.ends_with(kExtension)) {
        return 0;
    }
    uint64_t number = 0;
    for (const wchar_t digit : file.substr(name.size() + 1, kNumberDigits)) {
        if (digit < L'0' || digit > L'9') {
            return 0;
        }
        number = number * 10 + static_cast<uint64_t>(digit - L'0');
    }
    return number;
}

// The numbers of all finished files, in no order.
std::vector<uint64_t> FinishedNumbers(const LogFileOptions& options) {
    std::vector<uint64_t> numbers;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(options.folder, error)) {
        if (const uint64_t number = NumberOf(entry.path().filename().wstring(), options.name); number != 0) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

}  // namespace

LogFiles::LogFiles(LogFileOptions options) : m_options(Complete(std::move(options))), m_splitAt(m_options.splitBytes) {}

std::wstring LogFiles::CurrentPath() const {
    return m_options.folder + m_options.name + L".log";
}

std::wstring LogFiles::FinishedPath(uint64_t number) const {
    std::wstring digits = std::to_wstring(number);
    digits.insert(0, kNumberDigits - std::min(kNumberDigits, digits.size()), L'0');
    return m_options.folder + m_options.name + L"." + digits + L".log";
}

LogWriteResult LogFiles::Write(std::string_view line) {
    const ExclusiveGuard guard(m_lock);
    if (!m_file && !Open()) {
        return LogWriteResult::Failed;
    }
    if (!HasSpace()) {
        return LogWriteResult::NoSpace;
    }
    const uint64_t room = m_splitAt - std::min(m_size, m_splitAt);
    if (m_options.splitBytes != 0 && m_size != 0 && line.size() > room) {
        Split();
        if (!Open()) {
            return LogWriteResult::Failed;
        }
    }
    DWORD written = 0;
    const bool good = WriteFile(m_file.Get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    m_size += written;
    m_sinceSpaceCheck += written;
    return good ? LogWriteResult::Written : LogWriteResult::Failed;
}

// Asked now and then: once there was too little it is asked for each line, so that writing goes on as soon as it can.
bool LogFiles::HasSpace() {
    if (m_hasSpace && m_sinceSpaceCheck < kSpaceCheckBytes) {
        return true;
    }
    const DiskSpace space = m_options.diskSpace(m_options.folder);
    m_sinceSpaceCheck = 0;
    m_hasSpace = space.available >= std::max(m_options.reserveBytes, space.total / 100 * m_options.reservePercent);
    return m_hasSpace;
}

bool LogFiles::Open() {
    std::error_code error;
    std::filesystem::create_directories(m_options.folder, error);
    m_file.Reset(CreateFileW(CurrentPath().c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!m_file || !GetFileSizeEx(m_file.Get(), &size)) {
        const DWORD cause = GetLastError();
        m_file.Reset();
        SetLastError(cause);
        return false;
    }
    m_size = static_cast<uint64_t>(size.QuadPart);
    return true;
}

// From 1. No name is taken twice: each number is as high as its place, or higher. A file that cannot be renamed keeps
// its number, and the next try is made at the next split.
void LogFiles::NumberAnew(std::vector<uint64_t>& numbers) const {
    uint64_t next = 1;
    for (uint64_t& number : numbers) {
        if (number == next || MoveFileExW(FinishedPath(number).c_str(), FinishedPath(next).c_str(), 0)) {
            number = next;
        }
        ++next;
    }
}

// When the file cannot be renamed it goes on growing: a log that is too long is better than none. The next try, which
// reads the folder again, comes when it has grown by as much once more.
void LogFiles::Split() {
    m_file.Reset();
    std::vector<uint64_t> numbers = FinishedNumbers(m_options);
    std::ranges::sort(numbers);
    if (!numbers.empty() && numbers.back() == kLastNumber) {
        NumberAnew(numbers);
    }
    numbers.push_back(numbers.empty() ? 1 : numbers.back() + 1);
    const bool isRenamed = MoveFileExW(CurrentPath().c_str(), FinishedPath(numbers.back()).c_str(), 0);
    m_splitAt = (isRenamed ? 0 : m_size) + m_options.splitBytes;
    if (m_options.maxFiles != 0 && numbers.size() >= m_options.maxFiles) {
        numbers.resize(numbers.size() - (m_options.maxFiles - 1));  // the current one counts
        for (const uint64_t number : numbers) {
            DeleteFileW(FinishedPath(number).c_str());
        }
    }
}

}  // namespace wrb
