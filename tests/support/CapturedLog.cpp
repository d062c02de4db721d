#include "CapturedLog.h"

#include <cstdarg>
#include <mutex>
#include <utility>

#include "DebugLog.h"
#include "Text.h"

namespace {

std::mutex g_lock;
std::vector<CapturedLine> g_lines;

}  // namespace

std::vector<CapturedLine> TakeCapturedLog() {
    const std::lock_guard guard(g_lock);
    return std::exchange(g_lines, {});
}

std::vector<std::wstring> TakeCapturedTexts() {
    std::vector<std::wstring> texts;
    for (CapturedLine& line : TakeCapturedLog()) {
        texts.push_back(std::move(line.text));
    }
    return texts;
}

// The linker takes this one and leaves the log client's in its library.
void DebugLog(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format, ...) noexcept {
    wchar_t text[4096];
    va_list arguments;
    va_start(arguments, format);
    wrb::FormatIntoV(text, std::size(text), format, arguments);
    va_end(arguments);
    const std::lock_guard guard(g_lock);
    g_lines.push_back({level, text, sourceFile, line});
}
