// wrbhost beside a test: started, asked, stopped.
#pragma once

#include "CmdProtocol.h"
#include "ExpectRun.h"
#include "FakePipeService.h"
#include "PipeClient.h"
#include "ServicePipes.h"
#include "UniqueName.h"

namespace wrb::test {

inline constexpr wchar_t kHost[] = L"wrbhost.exe";

// The command library that misbehaves: host_test_library.cpp.
inline const std::wstring kLibrary = ProgramFolder() + L"host_test_library.dll";

inline bool SendText(std::wstring_view text, uint64_t moreBytes = 0) {
    CPipeClient client;
    uint64_t bytes = text.size() * sizeof(wchar_t) + moreBytes;
    return client.Initial(kHostPipe) && client.Send(text.data(), bytes);
}

inline std::wstring Ask(const wchar_t* command, const wchar_t* parameter) {
    const std::wstring name = UniqueName(L"reply");
    const FakePipeService reply(name);
    CCmdProtocol message;
    message << command << name << parameter;
    EXPECT_TRUE(SendText(message.Text()));
    const auto messages = reply.WaitFor(1);
    return messages.empty() ? L"no answer" : messages[0].Text();
}

// wrbhost, serving.
struct Host : ChildProcess {
    explicit Host(const std::vector<std::wstring>& arguments) : ChildProcess(kHost, arguments) {
        EXPECT_TRUE(WaitForOutput("wrbhost: serving")) << Output();
    }
    // Stops it, and expects that exit code, of the stop too, and each of the parts in the output.
    void ExpectEnd(DWORD code, std::initializer_list<const char*> parts) const {
        ExpectRun(kHost, {L"--stop"}, code);
        EXPECT_EQ(WaitForExit(), code);
        for (const char* part : parts) {
            EXPECT_NE(Output().find(part), std::string::npos) << part << Output();
        }
    }
};

}  // namespace wrb::test
