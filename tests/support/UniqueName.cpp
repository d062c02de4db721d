#include "UniqueName.h"

#include <windows.h>

#include <atomic>

#include "Text.h"

namespace wrb::test {

std::wstring UniqueName(const wchar_t* stem) {
    static std::atomic<unsigned> counter{0};
    static const auto start = static_cast<unsigned>(GetTickCount());
    return FormatWide(L"%s_%010u_%010u_%010u_of_this_test", stem, static_cast<unsigned>(GetCurrentProcessId()), start,
                      ++counter);
}

}  // namespace wrb::test
