#include "CommandHead.h"

#include <gtest/gtest.h>

#include "FakeDbService.h"

namespace wrb::test {
namespace {

TEST(CommandHead, TellsLaneAndFailureAnswer) {
    using enum CommandLane;
    using enum FailureAnswer;
    const struct {
        std::wstring message;
        CommandLane lane;
        FailureAnswer failure;
        std::wstring replyPipe;
    } kCases[] = {
        {L"CMDHL_ECHO\tpipe\ttext", Quick, Empty, L"pipe"},
        {L"CMDHL_ECHO\tpipe", Quick, Empty, L"pipe"},
        {std::wstring(L"CMDHL_ECHO\tpipe\0\trest", 20), Quick, Empty, L"pipe"},
        {L"CMDHL_ECHO", Quick, Empty, L""},
        {L"CMDHL_GET_MS_CFG\tpipe\tuid", Database, Empty, L"pipe"},
        {L"CMDHL_SET_MS_CFG\tuid\t1", Database, None, L""},
        {L"CMDHL_PFW_SET_LOG\tpipe\tuid\tpackage\tfolder\t1", Upload, Zero, L"pipe"},
        {L"CMDHL_SET_SPYWARE_RESTORE_LOG\tpipe\tuid\t1\t2", Upload, Empty, L"pipe"},
        {L"CMDHL_UNKNOWN\tpipe", Quick, None, L""},
        {L"CMDHL_\u0445ECHO\tpipe", Quick, None, L""},
        {std::wstring(100'000, L'x'), Quick, None, L""},
        {L"", Quick, None, L""},
    };
    for (const auto& row : kCases) {
        const CommandHead head = ReadCommandHead(WideBytes(row.message));
        EXPECT_TRUE(head.lane == row.lane && head.failure == row.failure && head.replyPipe == row.replyPipe)
            << row.message.c_str();
    }
    EXPECT_EQ(ReadCommandHead(WideBytes(L"CMDHL_ECHO\tpipe") + '\x01').replyPipe, L"pipe");
}

}  // namespace
}  // namespace wrb::test
