// The least that an exchange over named pipes can cost: the system calls alone.
#pragma once

#include <string>
#include <string_view>

namespace wrb::bench {

// Connect, write, close. False when any of them fails; a busy pipe is waited for.
bool BareSend(const std::wstring& name, std::string_view bytes);

// Opens a reply pipe, sends the request and reads the answer to its end, with one blocking call a step.
bool BareExchange(const std::wstring& target, std::string_view request, const std::wstring& replyPipe);

}  // namespace wrb::bench
