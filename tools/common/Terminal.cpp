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

}  // namespace

std::optional<std::size_t> TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(std::max(info.srWindow.Right - info.srWindow.Left + 1, 20));
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
        text += WideToUtf8(columns ? CutTo(std::move(line), *columns - 1) : line) + "\n";
    }
    return text;
}

Progress::Progress(std::string what, std::size_t total)
    : m_what(std::move(what)),
      m_total(total),
      m_isShown(IsConsole(STD_ERROR_HANDLE)),
      m_next(GetTickCount64() + 1000) {}

Progress::~Progress() {
    if (m_hasLine) {
        PrintErr("\r" + std::string(m_what.size() + 30, ' ') + "\r");
    }
}

void Progress::Step() {
    ++m_done;
    if (m_isShown && GetTickCount64() >= m_next) {
        PrintErr("\r" + m_what + " " + std::to_string(m_done) + " of " + std::to_string(m_total));
        m_hasLine = true;
        m_next = GetTickCount64() + kProgressMilliseconds;
    }
}

}  // namespace wrb
