#include "DbVexor.h"

#include <utility>

#include "DbRequest.h"
#include "DebugLog.h"

bool dbGetVexorBmCfgW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbGetVexorBmCfgW", [&] {
        const int32_t replyId = wrb::NewDbReplyId();
        const wchar_t* name = wrb::DbName(DbCommand::GetVexorBmCfg);
        std::wstring answer;
        if (!wrb::AskDb(wrb::MakeDbRequest(name, replyId, uid, number), replyId, answer)) {
            return false;
        }
        WRB_LOG(kLogDebug, L"dbGetVexorBmCfgW - result string (%s)", answer.c_str());
        text = std::move(answer);
        return true;
    });
}

bool dbGetVexorCustomBmCfgW(const wchar_t* uid, wrb::CustomBmConfig& cfg) noexcept {
    if (!wrb::ReadDbMessage(DbCommand::GetVexorCustomBmCfg, uid, L"dbGetVexorCustomBmCfgW", cfg)) {
        WRB_LOG(kLogError, L"%s - Fail to get vexor custom BM cfg.", L"dbGetVexorCustomBmCfgW");
        return false;
    }
    return true;
}
