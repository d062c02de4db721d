// One command as an agent sends it: to the host's pipe, with a reply pipe of its own.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "CommandTable.h"

namespace wrb {

struct Answer {
    bool delivered = false;  // the host has read the message
    bool answered = false;   // always false for a command that does not answer
    std::wstring text;
};

// How often the host has read, and answered, each command of the table. Any thread.
class CommandTally {
  public:
    void CountDelivered(const std::wstring& command) { Count(m_delivered, command); }
    void CountAnswered(const std::wstring& command) { Count(m_answered, command); }
    uint32_t Delivered(uint32_t row) const { return m_delivered[row]; }
    uint32_t Answered(uint32_t row) const { return m_answered[row]; }

  private:
    using Counts = std::array<std::atomic<uint32_t>, static_cast<std::size_t>(CommandSlot::kCount)>;

    static void Count(Counts& counts, const std::wstring& command);  // a command that is not in the table: nothing

    Counts m_delivered{};
    Counts m_answered{};
};

// Writes the bytes as one connection. False: the cause is in GetLastError.
bool Deliver(const wchar_t* pipe, const void* data, std::size_t bytes);
bool DeliverToHost(const std::wstring& message);

// Unique on the machine, and 47 characters long: some upload commands cut up to 33 characters off the name.
std::wstring NewReplyPipe();

// Sends a message that names the reply pipe and waits for the answer: one minute at most, and no longer than the host's
// process lives.
Answer Exchange(const std::wstring& message, const std::wstring& replyPipe);

// The same for a command and the fields that follow the reply pipe.
Answer Ask(CommandTally& tally, const std::wstring& command, std::span<const std::wstring> fields,
           const std::wstring& replyPipe = NewReplyPipe());
inline Answer Ask(CommandTally& tally, const std::wstring& command, std::initializer_list<std::wstring> fields,
                  const std::wstring& replyPipe = NewReplyPipe()) {
    return Ask(tally, command, std::span(fields.begin(), fields.size()), replyPipe);
}

// Sends a command without one.
bool Tell(CommandTally& tally, const std::wstring& command, std::span<const std::wstring> fields);
inline bool Tell(CommandTally& tally, const std::wstring& command, std::initializer_list<std::wstring> fields) {
    return Tell(tally, command, std::span(fields.begin(), fields.size()));
}

}  // namespace wrb
