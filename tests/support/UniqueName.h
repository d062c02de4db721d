// Names for pipes, events and files that no other test, and no other run of the same test, uses.
#pragma once

#include <windows.h>

#include <atomic>

#include "Text.h"

namespace wrb::test {

// "STEM_" and something unique, at least 40 characters in all and free of anything that a file name may not hold.
inline std::wstring UniqueName(const wchar_t* stem = L"test") {
    static std::atomic<unsigned> counter{0};
    static const auto start = static_cast<unsigned>(GetTickCount());
    return FormatWide(L"%s_%010u_%010u_%010u_of_this_test", stem, static_cast<unsigned>(GetCurrentProcessId()), start,
                      ++counter);
}

}  // namespace wrb::test
