// The parts of the page. Every part writes complete HTML elements; every text is escaped.
#pragma once

#include <string>

#include "INICache.h"
#include "cgi_PutStream.h"

namespace wrb {

// The result of the request, shown above the page's parts.
struct Outcome {
    const char* status = "200 OK";  // of the HTTP answer
    std::wstring message;           // empty: no message
};

// The outcome alone, for a server without a home folder.
void PutMessagePage(CPutStream& out, const Outcome& outcome);

void PutStatusPage(CPutStream& out, const Outcome& outcome, CINICache& scanIni, CINICache& serverIni);

void PutCounterTable(CPutStream& out);
void PutTicketTable(CPutStream& out, CINICache& scanIni, CINICache& serverIni);
void PutScanForm(CPutStream& out, CINICache& scanIni);

// <td>text</td>
void PutCell(CPutStream& out, const std::wstring& text);

}  // namespace wrb
