// The commands that test the connection and clear the INI caches.
#include <windows.h>

#include <atomic>
#include <random>
#include <string>

#include "Clock.h"
#include "CmdProtocol.h"
#include "CommandTable.h"
#include "DebugLog.h"
#include "INICache.h"
#include "cmdhl_Reply.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Examples.cpp"

namespace {

// One command sleeps at a time: sleeping commands must not take all workers.
constinit std::atomic_flag isSleeping;

}  // namespace

void cmdhl_Sleep(CCmdProtocol& message) {
    std::wstring content;
    message >> content;
    WRB_LOG(kLogDebug8, L"content:[%s]", content.c_str());
    if (isSleeping.test_and_set()) {
        WRB_LOG(kLogWarning, L"%s - refused, another command sleeps.", L"cmdhl_Sleep");
        return;
    }
    std::minstd_rand random(wrb::SystemClock().TickMilliseconds() + GetCurrentThreadId());
    Sleep(static_cast<DWORD>(random() % 3000));
    isSleeping.clear();
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

// Does not clear the cache of the sandbox analyzer.
void cmdhl_ClearIniCache(CCmdProtocol&) {
    WRB_LOG(kLogDebug8, L"cmdhl_ClearIniCache");
    ScanIniCache().clear();
    ServerIniCache().clear();
}
