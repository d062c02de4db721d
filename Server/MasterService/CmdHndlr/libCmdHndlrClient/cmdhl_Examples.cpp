#include <windows.h>

#include <random>
#include <string>

#include "CmdProtocol.h"
#include "DebugLog.h"
#include "INICache.h"
#include "cmdhl_Handlers.h"
#include "cmdhl_Reply.h"

void cmdhl_Sleep(CCmdProtocol& message) {
    std::wstring content;
    message >> content;
    WRB_LOG(8, L"content:[%s]", content.c_str());
    std::minstd_rand random(GetTickCount() + GetCurrentThreadId());
    Sleep(static_cast<DWORD>(random() % 3000));
}

void cmdhl_Echo(CCmdProtocol& message) {
    std::wstring replyPipe;
    std::wstring content;
    message >> replyPipe >> content;
    WRB_LOG(8, L"content:[%s]", content.c_str());
    if (!wrb::Reply(replyPipe.c_str(), content)) {
        WRB_LOG('E', L"%s - cmdhl_OutputCommand failed.", L"cmdhl_Echo");
    }
}

// The third cache, of the sandbox analyzer's settings, keeps its contents: it is not part of what this command drops.
void cmdhl_ClearIniCache(CCmdProtocol&) {
    WRB_LOG(8, L"cmdhl_ClearIniCache");
    ScanIniCache().clear();
    ServerIniCache().clear();
}
