// The walk over an unpacked spyware log package.
#pragma once

#include "HandlerCounterBlock.h"

// Appends a record to the feedback log (cmdhl_WtcLog.h) for every entry of every log in `directory`, an ANSI path, and
// in the folders below it. docs/commands.md gives the form of a log and what is skipped.
//
// Walks nothing while the server is not running (its stop event does not exist). When it finds the stop event
// signalled, and after the 10,000th entry, which costs a line in the debug log, it appends no more and only counts; it
// ends at 100,000 entries. A record that finds the feedback log busy for three seconds is dropped; after three such
// records the others are tried without waiting. One line at the end gives the number dropped. A log that cannot be read
// costs a line; one that cannot be read within ten seconds ends the walk.
//
// Every entry that is not in the feedback log although it should be is added to the rows of `lost`; of a log that
// cannot be read, one.
void cmdhl_ScanSpywareLogDir(const char* directory, wrb::Undelivered* lost = nullptr);
