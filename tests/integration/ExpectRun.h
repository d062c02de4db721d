// A program of the project, run to its end.
#pragma once

#include <gtest/gtest.h>

#include "ChildProcess.h"

namespace wrb::test {

// Expects that it ends with the code and has printed the part. All that it has printed.
inline std::string ExpectRun(const wchar_t* program, const std::vector<std::wstring>& arguments, DWORD code,
                             const char* part = "") {
    const ChildProcess process(program, arguments);
    EXPECT_EQ(process.WaitForExit(), code) << process.Output();
    EXPECT_NE(process.Output().find(part), std::string::npos) << process.Output();
    return process.Output();
}

}  // namespace wrb::test
