#include "SourceFile.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(SourceFile, IsRepoRelativeWithBackslashes) {
    EXPECT_EQ(std::wstring(WRB_SOURCE_FILE), L"tests\\unit\\Server\\libCommon\\SourceFile_test.cpp");
}

}  // namespace
