// The event that stops the server's programs.
#pragma once

namespace wrb {

// The program that hosts the command handlers makes it and keeps it until it ends. Signalled: the server stops.
inline constexpr wchar_t kServerStopEvent[] = L"Calloway_Warrenby_Server_Stop_Event";

}  // namespace wrb
