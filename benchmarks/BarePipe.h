// The least that an exchange over named pipes can cost: the system calls alone.
#pragma once

#include <string>
#include <string_view>

namespace wrb::bench {

// Connects, sets the read mode, writes in pieces of at most `piece` bytes, closes. Waits for a busy pipe. False when a
// step fails.
bool BareSend(const std::wstring& name, std::string_view bytes, std::size_t piece = std::string_view::npos);

// Opens a reply pipe, sends the request and reads the answer to its end, with one blocking call a step.
bool BareExchange(const std::wstring& target, std::string_view request, const std::wstring& replyPipe);

}  // namespace wrb::bench
