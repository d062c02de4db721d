// One command through the entry point, and its answer. For tests that link the command library.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "UniqueName.h"
#include "cmdhl.h"

// `parameters` may be several fields, TAB between them.
inline std::wstring AskOn(const std::wstring& replyPipe, const wchar_t* command, const std::wstring& parameters) {
    const wrb::test::FakePipeService reply(replyPipe);
    CCmdProtocol message;
    message << command << replyPipe << parameters;
    EXPECT_EQ(cmdhl_Process(message.Text().data(), message.Text().size() * sizeof(wchar_t)), 1u);
    const auto messages = reply.WaitFor(1);
    std::wstring answer = messages.empty() ? L"no answer" : messages[0].Text();
    EXPECT_TRUE(messages.empty() || messages[0].bytes.size() == answer.size() * sizeof(wchar_t)) << "no terminator";
    return answer;
}

inline std::wstring Ask(const wchar_t* command, const std::wstring& parameters) {
    return AskOn(wrb::test::UniqueName(L"reply"), command, parameters);
}

// A command that does not answer.
inline void Tell(const std::wstring& message) {
    EXPECT_EQ(cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)), 1u);
}
