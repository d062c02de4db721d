// The commands that test the connection and clear the INI caches.
#include <windows.h>

#include <random>
#include <string>

#include "Clock.h"
#include "CmdProtocol.h"
#include "CommandTable.h"
#include "DebugLog.h"
#include "INICache.h"
#include "Patience.h"
#include "cmdhl_Reply.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl_Examples.cpp"

namespace {

// One command sleeps at a time: sleeping commands must not take all workers.
constinit wrb::LongWaits sleeper;
constexpr uint64_t kSleeper = 1;

}  // namespace

void cmdhl_Sleep(CCmdProtocol& message) {
    std::wstring content;
    message >> content;
    WRB_LOG(kLogDebug8, L"content:[%s]", content.c_str());
    if (!sleeper.Enter(1, kSleeper)) {
        WRB_LOG(kLogWarning, L"%s - refused, another command sleeps.", L"cmdhl_Sleep");
        return;
    }
    std::minstd_rand random(wrb::SystemClock().TickMilliseconds() + GetCurrentThreadId());
    Sleep(static_cast<DWORD>(random() % 3000));
    sleeper.Leave(kSleeper);
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
