// The frame that every answering command shares: an agent's uid goes in, a text goes out to the reply pipe.
#pragma once

#include <cstdint>
#include <string>

#include "CommandSlot.h"
#include "DebugLog.h"

class CCmdProtocol;

namespace wrb {

// The command's own logic: fills `output` for the agent `uid`. What an empty uid means is the logic's own: to the scan
// requests the server as a whole, to the setting bundles an agent that nobody knows. With `bResetCfgFlag` it also
// clears the agent's "changed" bit. False: nothing was found, and `output` is empty.
using AnswerLogic = bool (*)(std::wstring& output, const wchar_t* uid, bool bResetCfgFlag);

// An AnswerLogic for what has no "changed" bit.
template <bool (*getter)(std::wstring& output, const wchar_t* uid)>
bool WithoutReset(std::wstring& output, const wchar_t* uid, bool /*bResetCfgFlag*/) {
    return getter(output, uid);
}

// What sets one answering command apart from another. The texts live as long as the program.
struct AnswerFrame {
    CommandSlot slot;  // where its calls are counted
    AnswerLogic logic;
    const wchar_t* uidLine;     // format, logged at level 8 before the logic runs; its %s is the uid
    const wchar_t* outputLine;  // format, logged at level 8 after it; its %s is the answer
    const wchar_t* sourceFile;  // where the log lines say that they come from
    uint32_t line;
    const wchar_t* replyFailedLine = nullptr;  // text, logged when the answer cannot be sent; null: no further line
    uint32_t replyFailedLevel = kLogError;
};

// Reads the reply pipe and the uid from `message`, runs the logic with bResetCfgFlag false and sends what it gave; an
// answer is sent also when it is empty. The call is counted, and timed from here to before the reply, so that a slow
// reader does not show as a slow command. What the logic throws passes through, and so does the E_FAIL of a process
// without counters; the counters are given back either way.
void AnswerCommand(const AnswerFrame& frame, CCmdProtocol& message);

}  // namespace wrb
