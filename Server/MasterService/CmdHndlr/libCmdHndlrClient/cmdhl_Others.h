// What the package extractor calls for each entry of an uploaded log package.
#pragma once

#include <cstdint>
#include <string>

// Reads one log file of the agent `uid`. The result is for the log only.
using ExtractedLogProcessor = int32_t (*)(const std::wstring& uid, const wchar_t* fileName);

// For an entry that has been written (FPK_ENTRY_WRITTEN): runs `processor` on it, then deletes it and the folders that
// this leaves empty. Other events pass. `context` is the uid, a const std::wstring. Always true, and never throws:
// what the processor throws is logged.
bool cmdhl_ProcessExtractedLog(const char* entry, const char* directory, unsigned event, void* context,
                               ExtractedLogProcessor processor) noexcept;
