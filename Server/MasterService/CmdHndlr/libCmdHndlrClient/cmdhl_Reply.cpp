#include "cmdhl_Reply.h"

#include <windows.h>

#include "DebugLog.h"
#include "PipeClient.h"

unsigned cmdhl_OutputCommand(const wchar_t* pipeName, const void* body, uint64_t byteCount) {
    CPipeClient client;
    if (!client.Initial(pipeName)) {
        const DWORD error = GetLastError();
        WRB_LOG(5, L"init pipe client [%s] failed! err=[%d]", pipeName, error);
        return 0;
    }
    if (!client.Send(body, byteCount)) {
        const DWORD error = GetLastError();
        WRB_LOG(5, L"pipe [%s] send failed!. err=[%d]", pipeName, error);
        return 0;
    }
    return 1;
}
