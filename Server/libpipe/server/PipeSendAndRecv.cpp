#include "DebugLog.h"
#include "PipeClient.h"
#include "PipeServer.h"

int PipeSendAndRecvW(const void* request, uint64_t requestBytes, const wchar_t* replyPipeName,
                     const wchar_t* targetPipeName, CPipeServer& server, HANDLE userEvent) {
    if (!server.Initial(replyPipeName, userEvent)) {
        WRB_LOG(kLogError, L"[PipeSendAndRecvW] Initial pipe server failed!");
        return 0;
    }
    CPipeClient client;
    if (!client.Initial(targetPipeName)) {
        WRB_LOG(kLogError, L"[PipeSendAndRecvW] Initial pipe client failed! err=%d", GetLastError());
        return 0;
    }
    server.EndWith(client);
    if (!client.Send(request, requestBytes)) {
        WRB_LOG(kLogError, L"[PipeSendAndRecvW] pipe send failed!. err=%d", GetLastError());
        return 0;
    }
    return 1;
}
