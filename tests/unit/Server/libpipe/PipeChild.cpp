// A service for the pipe test: takes one request on the pipe that its first argument names, and never answers. Of the
// second argument, if there is one, it opens the pipe for the answer.
#include <windows.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc < 2) {
        return 1;
    }
    const HANDLE pipe = CreateNamedPipeA((std::string("\\\\.\\pipe\\") + argv[1]).c_str(), PIPE_ACCESS_INBOUND,
                                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 1024, 1000, nullptr);
    std::puts(pipe == INVALID_HANDLE_VALUE ? "no pipe" : "serving");
    std::fflush(stdout);
    ConnectNamedPipe(pipe, nullptr);
    char bytes[1024];
    DWORD count = 0;
    while (ReadFile(pipe, bytes, sizeof bytes, &count, nullptr)) {
    }
    if (argc > 2) {
        CreateFileA((std::string("\\\\.\\pipe\\") + argv[2]).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                    nullptr);
    }
    std::puts("asked");
    std::fflush(stdout);
    for (;;) {
        Sleep(INFINITE);
    }
}
