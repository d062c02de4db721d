// One command through the entry point, and its answer.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "UniqueName.h"
#include "cmdhl.h"

inline std::wstring Ask(const wchar_t* command, const wchar_t* parameter) {
    const std::wstring name = wrb::test::UniqueName(L"reply");
    const wrb::test::CFakePipeService reply(name);
    CCmdProtocol message;
    message << command << name << parameter;
    EXPECT_EQ(cmdhl_Process(message.Text().data(), message.Text().size() * sizeof(wchar_t)), 1u);
    const auto messages = reply.WaitFor(1);
    return messages.empty() ? L"no answer" : messages[0].Text();
}
