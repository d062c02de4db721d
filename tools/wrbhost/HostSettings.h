// The host's settings in the server's home folder.
#pragma once

namespace wrb {

inline constexpr unsigned kDefaultWorkers = 20;
inline constexpr unsigned kMostWorkers = 254;  // one pipe instance each; 255 means unlimited to the system

// "Command_Handler_Static_Thread_Number" of section "INI_SERVER_SECTION" in wrbscan.ini, limited to the range 1 to
// kMostWorkers; kDefaultWorkers when the file or the key is missing.
unsigned ReadWorkerCount();

// Whether the server INI has the key without which agents with addresses get no web-threat settings.
bool HasProtectionKey();

}  // namespace wrb
