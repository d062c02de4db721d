// Lines of the debug log on their way into a file: one line stays one line, in UTF-8.
#include <algorithm>

#include "Fuzz.h"
#include "ReceivedLine.h"
#include "Text.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::wstring fields = WideInput(data, size);
    const auto line = wrb::ParseLogLine(fields);
    REQUIRE(line.has_value() == (std::ranges::count(fields, L'\t') >= 6));
    if (!line) {
        return 0;
    }
    REQUIRE(fields.ends_with(line->text) || line->text.size() == 8191);
    std::string text = wrb::FormatLogLine(*line);
    REQUIRE(text.ends_with(")]\r\n"));
    REQUIRE(wrb::WideToUtf8(wrb::Utf8ToWide(text)) == text);
    text.resize(text.size() - 2);
    REQUIRE(std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }));
    return 0;
}
