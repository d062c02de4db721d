#include "LogTail.h"

#include <windows.h>

#include <algorithm>

#include "Handle.h"

namespace wrb {
namespace {

constexpr int64_t kMostBytes = 1 << 20;

// From the most severe to the least. A line of another class is shown at every level.
constexpr std::string_view kClasses = "FEWID";

std::string ReadEnd(const std::wstring& path, bool& isReadable) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    isReadable = file && GetFileSizeEx(file.Get(), &size);
    if (!isReadable) {
        return {};
    }
    LARGE_INTEGER start{};
    start.QuadPart = std::max<int64_t>(0, size.QuadPart - kMostBytes);
    std::string text(static_cast<std::size_t>(size.QuadPart - start.QuadPart), '\0');
    DWORD read = 0;
    SetFilePointerEx(file.Get(), start, nullptr, FILE_BEGIN);
    if (!ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr)) {
        read = 0;
    }
    text.resize(read);
    if (start.QuadPart != 0) {
        text.erase(0, text.find('\n') + 1);  // the first line is cut
    }
    return text;
}

// What stands between the next pair of brackets; `rest` goes on after it.
std::string TakeBracketed(std::string_view& rest) {
    const std::size_t open = rest.find('[');
    const std::size_t close = open == rest.npos ? rest.npos : rest.find(']', open);
    if (close == rest.npos) {
        return {};
    }
    std::string text(rest.substr(open + 1, close - open - 1));
    rest.remove_prefix(std::min(rest.size(), close + 2));
    return text;
}

LogTailLine ParseLine(std::string_view line) {
    LogTailLine parsed;
    std::string_view rest = line;
    parsed.time = line.substr(0, std::min(line.size(), line.find(" [")));
    parsed.process = TakeBracketed(rest);
    parsed.level = TakeBracketed(rest);
    parsed.text = rest;
    return parsed;
}

bool IsWanted(const LogTailLine& line, std::string_view level) {
    const std::size_t most = level.empty() ? kClasses.npos : kClasses.find(level);
    const std::size_t own = line.level.empty() ? kClasses.npos : kClasses.find(line.level);
    return most == kClasses.npos || own == kClasses.npos || own <= most;
}

}  // namespace

LogTail ReadLogTail(const std::wstring& folder, std::string_view level, std::size_t count) {
    LogTail tail;
    const std::string text = ReadEnd(folder + L"\\wrbdebug.log", tail.isReadable);
    std::string_view rest = text;
    while (!rest.empty() && tail.lines.size() < count) {
        rest.remove_suffix(rest.ends_with('\n') ? 1 : 0);
        const std::size_t before = rest.rfind('\n');
        std::string_view line = rest.substr(before == rest.npos ? 0 : before + 1);
        rest.remove_suffix(line.size());
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        LogTailLine parsed = ParseLine(line);
        if (!line.empty() && IsWanted(parsed, level)) {
            tail.lines.push_back(std::move(parsed));
        }
    }
    std::ranges::reverse(tail.lines);
    return tail;
}

}  // namespace wrb
