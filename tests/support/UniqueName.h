// Names for pipes, events and files that no other test, and no other run of the same test, uses.
#pragma once

#include <string>

namespace wrb::test {

// "STEM_" and something unique, at least 40 characters in all and free of anything that a file name may not hold.
std::wstring UniqueName(const wchar_t* stem = L"test");

}  // namespace wrb::test
