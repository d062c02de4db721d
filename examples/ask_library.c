/* Asks for the manual-scan settings of an agent, or of the server, in this process: with the command library. The back
   end must run. Usage: ask_library [UID] */
#include <cmdhl.h>
#include <stdio.h>
#include <windows.h>

#define PIPE_NAME L"example_ask_library"
#define PATIENCE_MILLISECONDS 10000

static wchar_t g_answer[16384];

/* The library writes the answer to this pipe while it runs the command, so it is read on a thread of its own. */
static DWORD WINAPI ReadAnswer(void* pipe) {
    char* const begin = (char*)g_answer;
    const DWORD room = sizeof g_answer - sizeof *g_answer;
    DWORD used = 0;
    DWORD bytes = 0;
    if (ConnectNamedPipe(pipe, NULL) || GetLastError() == ERROR_PIPE_CONNECTED) {
        while (used < room &&
               (ReadFile(pipe, begin + used, room - used, &bytes, NULL) || GetLastError() == ERROR_MORE_DATA)) {
            used += bytes;
        }
    }
    return 0;
}

/* With what the system says about its last error. */
static void Complain(const wchar_t* what) {
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, NULL, GetLastError(), 0, text, 512,
                   NULL);
    fwprintf(stderr, L"%ls: %ls\n", what, text);
}

int wmain(int count, wchar_t** arguments) {
    wchar_t message[256];
    /* Command, reply pipe, fields: TAB between them. */
    const int characters =
        _snwprintf(message, 256, L"CMDHL_GET_MS_CFG\t%ls\t%ls", PIPE_NAME, count > 1 ? arguments[1] : L"");
    const HANDLE pipe =
        CreateNamedPipeW(L"\\\\.\\pipe\\" PIPE_NAME, PIPE_ACCESS_INBOUND,
                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS, 1, 0, 65536, 0, NULL);
    const HANDLE reader = pipe != INVALID_HANDLE_VALUE ? CreateThread(NULL, 0, ReadAnswer, pipe, 0, NULL) : NULL;
    if (reader == NULL || characters < 0) {
        Complain(L"cannot make the reply pipe");
        return 1;
    }
    cmdhl_Initialize(L"", L"", NULL); /* false is no failure */
    const unsigned known = cmdhl_Process(message, (unsigned long long)characters * sizeof *message);
    const DWORD waited = WaitForSingleObject(reader, PATIENCE_MILLISECONDS);
    cmdhl_Finalize();
    if (known != 1 || waited != WAIT_OBJECT_0) {
        fputs("no answer\n", stderr);
        return 1;
    }
    wprintf(L"%ls", g_answer);
    return 0;
}
