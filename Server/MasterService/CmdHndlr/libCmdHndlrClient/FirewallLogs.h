// Firewall logs of agents.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// Reads one log file of the agent `uid`. The result is for the log only.
using ExtractedLogProcessor = std::function<int32_t(const std::wstring& uid, const wchar_t* fileName)>;

// For an entry that has been written (FPK_ENTRY_WRITTEN): runs `processor` on it, then deletes it and the folders that
// this leaves empty. Ignores other events. `context` is the uid, a const std::wstring. Logs what the processor throws.
// Always true.
bool cmdhl_ProcessExtractedLog(const char* entry, const char* directory, unsigned event, void* context,
                               const ExtractedLogProcessor& processor) noexcept;

namespace wrb {

// "1", the seconds that the agent `uid` waits before it uploads (0: at once), and the administrator's condition, TAB
// between them. Always true.
bool GetPfwLogQueryCondition(std::wstring& output, const wchar_t* uid);

}  // namespace wrb
