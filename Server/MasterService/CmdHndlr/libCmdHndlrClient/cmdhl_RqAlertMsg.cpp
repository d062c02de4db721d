// Requests for the texts of alerts.
#include <algorithm>
#include <optional>

#include "CmdProtocol.h"
#include "CommandTable.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "cmdhl_Reply.h"
#include "cmdhm_ClnAlertMsg.h"

namespace {

// A counted type has a slot of its own and also counts in the command's.
class AlertCount {
  public:
    explicit AlertCount(int32_t type) {
        const auto* const found = std::ranges::find(wrb::kAlertSlots, type, &wrb::AlertSlot::type);
        if (found != std::end(wrb::kAlertSlots)) {
            m_all.emplace(static_cast<uint32_t>(wrb::CommandSlot::CMDHL_CMDHL_GET_CLN_ALERT_MSG));
            m_type.emplace(found->slot);
        }
    }

  private:
    std::optional<wrb::CounterCall> m_all;
    std::optional<wrb::CounterCall> m_type;
};

}  // namespace

void cmdhl_GetClnAlertMsg(CCmdProtocol& message) {
    std::wstring replyPipe;
    std::wstring uid;
    uint32_t number = 0;
    message >> replyPipe >> uid >> number;
    const auto alertType = static_cast<int32_t>(number);
    const AlertCount count(alertType);
    WRB_LOG(kLogInfo, L"cmdhl_GetClnAlertMsg >>> (%d)", alertType);
    std::wstring text;
    const int32_t result = cmdhm_GetClnAlertMsg(text, uid.c_str(), alertType, 1);
    CCmdProtocol answer;
    answer << result;
    if (result != 0) {
        answer << text;
    }
    WRB_LOG(kLogInfo, L"cmdhl_GetClnAlertMsg <<< (%s)", answer.Text().data());
    if (!wrb::Reply(replyPipe.c_str(), answer.Text())) {
        WRB_LOG(kLogError, L"%s - cmdhl_OutputCommand failed.", L"cmdhl_GetClnAlertMsg");
    }
}
