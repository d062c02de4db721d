// The debug log of a test: linked in place of the real DebugLog, it keeps every admitted line for the test to look at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct CapturedLine {
    uint32_t level;
    std::wstring text;
    std::wstring sourceFile = {};  // these two are not compared
    uint32_t line = 0;

    bool operator==(const CapturedLine& other) const { return level == other.level && text == other.text; }
};

// Hands over what has been logged since the last call, by any thread.
std::vector<CapturedLine> TakeCapturedLog();
std::vector<std::wstring> TakeCapturedTexts();
