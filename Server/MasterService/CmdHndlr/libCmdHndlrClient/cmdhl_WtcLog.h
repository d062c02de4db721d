// The feedback log "temp\wtc.log" under the server's home folder: what the spyware scanners of agents have found, kept
// for the cloud feedback. The library makes the folder when it is missing.
//
// A record is 166 bytes: the entry's name in 129 bytes and a GUID in 37, each as ANSI text, padded with NULs and cut so
// that a NUL always ends it. The file is written in text mode, as its readers expect: a line feed inside a field
// becomes two bytes, and that record one byte longer.
#pragma once

namespace wrb {

enum class WtcAppend {
    Done,   // written, not wanted, or lost with a line of level 'E'
    Busy,   // another program held the log for three seconds: this record is dropped
    NoHome  // the server has no home folder: the next record would fare no better
};

}  // namespace wrb

// Appends one record when the setting "GLNFeedbackEnabled" is on. The log is shared with other programs of the server,
// under the mutex "wrby_wtc_mutex". Any thread.
wrb::WtcAppend cmdhl_AppendWtcRecord(const wchar_t* entryName, const wchar_t* guid);
