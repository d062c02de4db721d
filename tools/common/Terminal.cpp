#include "Terminal.h"

#include <windows.h>

#include <algorithm>

#include "Console.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr unsigned kProgressMilliseconds = 250;

bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

bool TakesEscapes() {
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

std::vector<std::size_t> WidthsOf(const std::vector<std::vector<std::wstring>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    return widths;
}

// Where the text goes on after a break: under the last column that leaves half of the width, if there is one.
std::size_t HangOf(const std::wstring& line, std::size_t columns) {
    std::size_t hang = 0;
    for (std::size_t gap = line.find(L"  "); gap != line.npos; gap = line.find(L"  ", hang)) {
        const std::size_t start = line.find_first_not_of(L' ', gap);
        if (start > columns / 2) {
            return std::max<std::size_t>(hang, 4);
        }
        hang = start;
    }
    return hang;
}

// The last place that is no further than the columns and behind the hanging indentation.
std::size_t BreakOf(const std::wstring& line, std::size_t columns, std::size_t hang) {
    for (const wchar_t* between : {L"  ", L" "}) {
        const std::size_t at = line.rfind(between, columns);
        if (at != line.npos && at > hang) {
            return at;
        }
    }
    return columns;
}

void WrapLine(std::wstring line, std::size_t columns, std::wstring& out) {
    line.resize(line.find_last_not_of(L' ') + 1);
    const std::size_t hang = HangOf(line, columns);
    while (line.size() > columns) {
        const std::size_t at = BreakOf(line, columns, hang);
        out.append(line, 0, line.find_last_not_of(L' ', at - 1) + 1);
        out += L'\n';
        line.replace(0, line.find_first_not_of(L' ', at), hang, L' ');
    }
    out += line + L'\n';
}

}  // namespace

std::optional<std::size_t> TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) {
        return std::nullopt;
    }
    // The last column stays free: some consoles go on to the next line when it is filled.
    return static_cast<std::size_t>(std::max(info.srWindow.Right - info.srWindow.Left, 20));
}

bool UsesColour() {
    static const bool uses = GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) <= 1 && TakesEscapes();
    return uses;
}

std::string Coloured(const std::string& text, Colour colour) {
    constexpr const char* kStarts[] = {"\x1B[32m", "\x1B[33m", "\x1B[31m", "\x1B[2m"};
    return UsesColour() ? kStarts[static_cast<std::size_t>(colour)] + text + "\x1B[0m" : text;
}

std::wstring CutTo(std::wstring text, std::size_t columns) {
    constexpr std::wstring_view kCut = L"...";
    if (text.size() > columns) {
        text.resize(columns - std::min(columns, kCut.size()));
        text += kCut.substr(0, std::min(columns, kCut.size()));
    }
    return text;
}

std::string WrapText(const std::string& text, std::optional<std::size_t> columns) {
    if (!columns) {
        return text;
    }
    std::wstring wrapped;
    std::wstring rest = Utf8ToWide(text);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(L'\n'), rest.size());
        WrapLine(rest.substr(0, end), *columns, wrapped);
        rest.erase(0, end + 1);
    }
    return WideToUtf8(wrapped);
}

std::string TextTable::Text(std::optional<std::size_t> columns) const {
    std::vector<std::vector<std::wstring>> rows;
    if (!m_heads.empty()) {
        rows.push_back(m_heads);
    }
    for (const auto& row : m_rows) {
        auto& cells = rows.emplace_back();
        std::ranges::transform(row, std::back_inserter(cells), VisibleText);
    }
    const std::vector<std::size_t> widths = WidthsOf(rows);
    std::string text;
    for (const auto& row : rows) {
        std::wstring line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            line.append(i + 1 < row.size() ? widths[i] - row[i].size() + 2 : 0, L' ');
        }
        line.resize(line.find_last_not_of(L' ') + 1);
        text += WideToUtf8(line) + "\n";
    }
    return WrapText(text, columns);
}

StatusLine::StatusLine() : m_isShown(IsConsole(STD_ERROR_HANDLE)) {}

StatusLine::~StatusLine() {
    if (m_width != 0) {
        PrintErr("\r" + std::string(m_width, ' ') + "\r");
    }
}

void StatusLine::Show(const std::string& text) {
    if (m_isShown) {
        PrintErr("\r" + text + std::string(m_width - std::min(m_width, text.size()), ' '));
        m_width = text.size();
    }
}

Progress::Progress(std::string what, std::size_t total)
    : m_what(std::move(what)), m_total(total), m_next(GetTickCount64() + 1000) {}

void Progress::Step() {
    ++m_done;
    if (GetTickCount64() >= m_next) {
        m_line.Show(m_what + " " + std::to_string(m_done) + " of " + std::to_string(m_total));
        m_next = GetTickCount64() + kProgressMilliseconds;
    }
}

}  // namespace wrb
