// The event that stops the server's programs.
#pragma once

namespace wrb {

// Made by the program that hosts the command handlers, and there for as long as it runs; signalled: the server stops.
inline constexpr wchar_t kServerStopEvent[] = L"Calloway_Warrenby_Server_Stop_Event";

}  // namespace wrb
