// One command as an agent sends it: to the host's pipe, with a reply pipe of its own.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "CommandTable.h"

namespace wrb::soak {

struct Answer {
    bool delivered = false;  // the host has read the message
    bool answered = false;   // always false for a command that does not answer
    std::wstring text;
};

// How often the host has read each command of the table. Any thread.
class Delivered {
  public:
    void Count(const std::wstring& command);
    uint32_t Of(uint32_t row) const { return m_counts[row]; }

  private:
    std::array<std::atomic<uint32_t>, static_cast<std::size_t>(CommandSlot::kCount)> m_counts{};
};

const char* CommandName(uint32_t row);

// Writes the bytes as one connection. False: the cause is in GetLastError.
bool Deliver(const wchar_t* pipe, const void* data, std::size_t bytes);
bool DeliverToHost(const std::wstring& message);

// A reply pipe's name as agents make them: unique, and long enough for every upload command.
std::wstring NewReplyPipe();

// Sends a command with an answer and waits for it, one minute at most. `fields` follow the reply pipe.
Answer Ask(Delivered& delivered, const std::wstring& command, std::initializer_list<std::wstring> fields,
           const std::wstring& replyPipe = NewReplyPipe());

// Sends a command without one.
bool Tell(Delivered& delivered, const std::wstring& command, std::initializer_list<std::wstring> fields);

}  // namespace wrb::soak
