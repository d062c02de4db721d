// The feedback log "temp\wtc.log" under the server's home folder: what the spyware scanners of agents have found, kept
// for the cloud feedback. The folder is made when it is missing.
//
// A record is 166 bytes: the entry's name in 129 bytes and a GUID in 37, each as ANSI text, padded with NULs and cut so
// that a NUL always ends it. The file is written in text mode, as its readers expect: a line feed inside a field
// becomes two bytes, and that record one byte longer.
#pragma once

// Appends one record when the setting "GLNFeedbackEnabled" is on. The log is shared with other programs of the server,
// under the mutex "wrby_wtc_mutex"; a record that has to wait for more than three seconds is dropped. Any thread.
//
// False when the next record would fare no better: the log was busy, or the server has no home folder.
bool cmdhl_AppendWtcRecord(const wchar_t* entryName, const wchar_t* guid);
