#include "ReceivedLine.h"

#include <algorithm>
#include <ctime>

#include "CmdProtocol.h"
#include "LogFilter.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr std::size_t kFieldsBeforeText = 6;
constexpr std::size_t kSourceCharacters = 260;
constexpr std::size_t kTextCharacters = 8191;

std::wstring ClassOf(uint32_t level) {
    switch (level < kLogRanks.size() ? kLogRanks[level] : INT8_MIN) {
        case kRankAlways:
            return L"N";
        case kRankFatal:
            return L"F";
        case kRankError:
            return L"E";
        case kRankWarning:
            return L"W";
        case kRankInfo:
            return L"I";
        case kRankDebug:
            return L"D";
        default:
            return std::to_wstring(level);
    }
}

}  // namespace

std::optional<ReceivedLine> ParseLogLine(std::wstring_view fields) {
    if (static_cast<std::size_t>(std::ranges::count(fields, L'\t')) < kFieldsBeforeText) {
        return std::nullopt;
    }
    // The text is the last field and may hold TABs of its own.
    std::size_t textStart = 0;
    for (std::size_t i = 0; i < kFieldsBeforeText; ++i) {
        textStart = fields.find(L'\t', textStart) + 1;
    }
    const std::wstring head(fields.substr(0, textStart - 1));
    CCmdProtocol reader(head.data(), static_cast<int64_t>(head.size() * sizeof(wchar_t)));
    ReceivedLine line;
    uint32_t seconds = 0;
    uint32_t number = 0;
    std::wstring process;
    std::wstring thread;
    reader >> seconds >> process >> thread >> line.level >> line.sourceFile >> number;
    line.seconds = seconds;  // senders write it with a sign: negative from 2038 on
    line.process = static_cast<uint32_t>(_wcstoui64(process.c_str(), nullptr, 10));
    line.thread = static_cast<uint32_t>(_wcstoui64(thread.c_str(), nullptr, 10));
    line.line = static_cast<int32_t>(number);
    line.sourceFile.resize(std::min(line.sourceFile.size(), kSourceCharacters));
    line.text = fields.substr(textStart, kTextCharacters);
    return line;
}

std::string FormatLogLine(const ReceivedLine& line) {
    const std::time_t seconds = line.seconds;
    std::tm local{};
    if (localtime_s(&local, &seconds) != 0) {
        local = {};  // a time before 1970
        local.tm_year = 70;
        local.tm_mday = 1;
    }
    std::wstring text = FormatWide(L"%04d %02d/%02d %02d:%02d:%02d [%04x : %04x] [%s] ", local.tm_year + 1900,
                                   local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                                   line.process, line.thread, ClassOf(line.level).c_str());
    text += VisibleText(line.text);
    text += L" - [" + VisibleText(line.sourceFile) + L"(" + std::to_wstring(line.line) + L")]\r\n";
    return WideToUtf8(text);
}

}  // namespace wrb
