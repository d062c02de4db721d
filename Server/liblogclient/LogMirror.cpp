#include "LogMirror.h"

#include "CancelAfter.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kLineCharacters = 5120;  // the longest text (4095), its stamp, and a long path
constexpr uint32_t kOpenMilliseconds = 2'000;  // whoever holds an oplock on the file decides how long it takes

void WriteWhole(HANDLE file, const wchar_t* text, std::size_t characters) noexcept {
    DWORD written = 0;
    WriteFile(file, text, static_cast<DWORD>(characters * sizeof(wchar_t)), &written, nullptr);
}

}  // namespace

LogMirror::LogMirror(const wchar_t* path) noexcept {
    const CancelAfter limit(kOpenMilliseconds);
    m_file.Reset(CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (m_file && GetLastError() != ERROR_ALREADY_EXISTS) {
        WriteWhole(m_file.Get(), L"\xFEFF", 1);
    }
}

void LogMirror::Append(const wchar_t* sourceFile, uint32_t line, const wchar_t* text) const noexcept {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t buffer[kLineCharacters];
    const std::size_t length =
        FormatInto(buffer, kLineCharacters, L"%04d %02d/%02d %02d:%02d:%02d [%04x : %04x] %s - [%s(%d)]\r\n", now.wYear,
                   now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, GetCurrentProcessId(),
                   GetCurrentThreadId(), text, sourceFile, static_cast<int>(line));
    WriteWhole(m_file.Get(), buffer, length);
}

}  // namespace wrb
