// The least that an exchange over named pipes can cost: the system calls alone.
#pragma once

#include <string>
#include <string_view>

namespace wrb::bench {

// Connect, set the read mode, write, close. False when any of them fails; a busy pipe is waited for. One write, or as many as there are
// pieces: the product's client writes at most 1024 bytes at once.
bool BareSend(const std::wstring& name, std::string_view bytes, std::size_t piece = std::string_view::npos);

// Opens a reply pipe, sends the request and reads the answer to its end, with one blocking call a step.
bool BareExchange(const std::wstring& target, std::string_view request, const std::wstring& replyPipe);

}  // namespace wrb::bench
