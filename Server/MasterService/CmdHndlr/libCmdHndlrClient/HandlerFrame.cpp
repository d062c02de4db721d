#include "HandlerFrame.h"

#include "CmdProtocol.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "cmdhl_Reply.h"

namespace wrb {

void AnswerCommand(const AnswerFrame& frame, CCmdProtocol& message) {
    std::wstring replyPipe;
    std::wstring output;
    {
        const CounterCall call(static_cast<uint32_t>(frame.slot));
        std::wstring uid;
        message >> replyPipe >> uid;
        WRB_LOG_FROM(kLogDebug8, frame.sourceFile, frame.line, frame.uidLine, uid.c_str());
        frame.logic(output, uid.c_str(), false);
        WRB_LOG_FROM(kLogDebug8, frame.sourceFile, frame.line, frame.outputLine, output.c_str());
    }
    if (!Reply(replyPipe.c_str(), output) && frame.replyFailedLine != nullptr) {
        WRB_LOG_FROM(frame.replyFailedLevel, frame.sourceFile, frame.line, L"%s", frame.replyFailedLine);
    }
}

}  // namespace wrb
