// The feedback log "temp\wtc.log" under the server's home folder: what the spyware scanners of agents have found, kept
// for the cloud feedback. docs/commands.md gives its records.
#pragma once

#include <cstdint>

namespace wrb {

enum class WtcAppend {
    Done,   // written, or not wanted
    Lost,   // cannot be written; a line at level 'E' says why
    Busy,   // another program held the log for as long as the call waits; the record is dropped
    NoHome  // the server has no home folder, so every record will fail
};

// Whether records are written at all: the setting "GLNFeedbackEnabled".
bool IsFeedbackLogOn();

inline constexpr uint32_t kWtcWaitMilliseconds = 3000;

}  // namespace wrb

// Appends one record when the setting "GLNFeedbackEnabled" is on. A log of "GLNFeedbackMaxSizeInK" is first renamed to
// "wtc.log.1", in place of the one that has that name; where that fails, the record is lost. The log is shared with
// other programs of the server, under the mutex "wrby_wtc_mutex". Any thread.
wrb::WtcAppend cmdhl_AppendWtcRecord(const wchar_t* entryName, const wchar_t* guid,
                                     uint32_t waitMilliseconds = wrb::kWtcWaitMilliseconds);
