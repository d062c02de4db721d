// The debug log of a test: linked in place of the real DebugLog, it keeps every admitted line for the test to look at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct tagCapturedLine {
    uint32_t level;
    std::wstring text;

    bool operator==(const tagCapturedLine&) const = default;
};

// Hands over what has been logged since the last call, by any thread.
std::vector<tagCapturedLine> TakeCapturedLog();
