// The process's one ticket.
#include "INICache.h"
#include "LiveBoard.h"
#include "cmdhl_LogTicket.h"

namespace wrb {
namespace {

LogTicket& TheTicket() {
    static LogTicket ticket(SystemClock(), ScanIniCache(), ServerIniCache(),
                            [](const LiveUploads& uploads) { TheLiveBoard().Show(uploads); });
    return ticket;
}

}  // namespace
}  // namespace wrb

bool cmdhl_RequestToUploadPFWLog(const std::wstring& uid, int32_t& waitingSeconds) {
    waitingSeconds = wrb::TheTicket().Request(uid);
    return true;
}

bool cmdhl_RemoveClientFromLogUploadingList(const std::wstring& uid) {
    return wrb::TheTicket().Release(uid);
}
