// What the host takes from the server's home folder.
#pragma once

namespace wrb {

inline constexpr unsigned kDefaultWorkers = 20;
inline constexpr unsigned kMostWorkers = 254;  // one pipe instance each, and more would mean no limit to the system

// "Command_Handler_Static_Thread_Number" of section "INI_SERVER_SECTION" in wrbscan.ini, brought into the range 1 to
// kMostWorkers; kDefaultWorkers when the file or the key is missing.
unsigned ReadWorkerCount();

}  // namespace wrb
