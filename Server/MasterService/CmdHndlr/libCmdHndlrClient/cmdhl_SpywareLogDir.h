// The walk over an unpacked spyware log package.
#pragma once

// Appends a record to the feedback log (cmdhl_WtcLog.h) for every entry of every log in `directory`, an ANSI path, and
// in the folders below it. Walks nothing while the server is not running (its stop event does not exist). The walk ends
// after the record or the file at which it finds the stop event signalled, and after the 10,000th entry, with a line in
// the debug log. A record that finds the feedback log busy for three seconds is dropped; the number dropped is logged
// once at the end of the walk.
//
// A log is an INI file: section "GeneralInfo" has "GUID" and "SectionCount", every other section is an entry. Of the
// first "SectionCount" + 1 sections, in the order of the file and as far as their names fit into 14000 characters, all
// but "GeneralInfo" are recorded. A file of another form has no sections and so no entries. Links, paths of 260
// characters and more, and files of more than 16 MiB are skipped, each with a line in the debug log.
void cmdhl_ScanSpywareLogDir(const char* directory);
