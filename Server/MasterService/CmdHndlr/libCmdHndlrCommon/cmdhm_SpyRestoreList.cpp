#include "CmdProtocol.h"
#include "DbScanCfg.h"
#include "DebugLog.h"
#include "UidField.h"
#include "cmdhm_ScanCfg.h"

namespace {

// Unlike the sections of the scan groups: blanks around the equals sign, and the count behind the items.
void AppendSessions(std::wstring& out, CCmdProtocol& answer) {
    uint32_t count = 0;
    std::wstring session;
    for (answer >> session; !session.empty(); answer >> session) {
        out.append(L"RestoreSession_").append(std::to_wstring(count)).append(L" = ").append(session).append(L"\n");
        ++count;
    }
    out.append(L"RestoreSessionCount = ").append(std::to_wstring(count)).append(L"\n");
}

}  // namespace

bool cmdhm_GetSpyRestoreList(std::wstring& out, const wchar_t* uid) {
    out.clear();
    std::wstring sessions;
    if (!dbGetBackupLogAllSessionsW(wrb::UidField(uid).CStr(), sessions) || sessions.empty()) {
        return false;
    }
    out = L"[Spyware Restore Session]\n";
    CCmdProtocol answer(sessions.data(), static_cast<int64_t>(sessions.size() * sizeof(wchar_t)));
    AppendSessions(out, answer);
    WRB_LOG(kLogDebug8, L"[cmdhm_GetSpyRestoreList] [%s]", out.c_str());
    return true;
}
