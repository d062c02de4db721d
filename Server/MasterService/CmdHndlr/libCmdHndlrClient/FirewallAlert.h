// What the agents' firewalls have counted, for the administrator's alerts.
#pragma once

#include <cstdint>

// Adds one agent's counts (intrusions, firewall rules, total) to the sums of the window and logs them; tells the
// administrator when a threshold is reached (AlertNotifier.h). Nothing happens while alerts are off. `timeStamp` is 14
// digits, YYYYMMDDHHMMSS, and only shows in texts. Any thread; never throws.
void InsertOneLog(uint32_t intrusions, uint32_t rules, uint32_t total, const wchar_t* timeStamp) noexcept;
