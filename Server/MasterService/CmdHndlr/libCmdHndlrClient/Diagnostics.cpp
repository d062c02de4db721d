// The commands that try the library out and clear its INI caches.
#include <windows.h>

#include <random>
#include <string>

#include "CmdProtocol.h"
#include "DebugLog.h"
#include "INICache.h"
#include "WrittenHandlers.h"
#include "cmdhl_Reply.h"

// Log lines go on naming the module of old.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Examples.cpp"

void cmdhl_Sleep(CCmdProtocol& message) {
    std::wstring content;
    message >> content;
    WRB_LOG(kLogDebug8, L"content:[%s]", content.c_str());
    std::minstd_rand random(GetTickCount() + GetCurrentThreadId());
    Sleep(static_cast<DWORD>(random() % 3000));
}

void cmdhl_Echo(CCmdProtocol& message) {
    std::wstring replyPipe;
    std::wstring content;
    message >> replyPipe >> content;
    WRB_LOG(kLogDebug8, L"content:[%s]", content.c_str());
    if (!wrb::Reply(replyPipe.c_str(), content)) {
        WRB_LOG(kLogError, L"%s - cmdhl_OutputCommand failed.", L"cmdhl_Echo");
    }
}

// This command does not clear the third cache, that of the sandbox analyzer.
void cmdhl_ClearIniCache(CCmdProtocol&) {
    WRB_LOG(kLogDebug8, L"cmdhl_ClearIniCache");
    ScanIniCache().clear();
    ServerIniCache().clear();
}
