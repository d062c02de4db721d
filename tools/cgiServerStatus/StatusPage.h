// The page: what is on it, part by part. Every part writes complete HTML elements; every text is escaped.
#pragma once

#include <string>

#include "INICache.h"
#include "cgi_PutStream.h"

namespace wrb {

// What became of the request, shown above the page's parts.
struct Outcome {
    const char* status = "200 OK";  // of the HTTP answer
    std::wstring message;           // empty: nothing to tell
};

// The outcome alone, for a server whose files are out of reach.
void PutMessagePage(CPutStream& out, const Outcome& outcome);

void PutStatusPage(CPutStream& out, const Outcome& outcome, CINICache& scanIni, CINICache& serverIni);

void PutCounterTable(CPutStream& out);
void PutTicketTable(CPutStream& out, CINICache& scanIni, CINICache& serverIni);
void PutScanForm(CPutStream& out, CINICache& scanIni);

// <td>text</td>
void PutCell(CPutStream& out, const std::wstring& text);

}  // namespace wrb
