#include "StatusPage.h"

namespace wrb {
namespace {

// The page runs no script and loads nothing; forms go to the page itself.
constexpr char kHeaders[] =
    "Content-Type: text/html; charset=utf-8\r\n"
    "Cache-Control: no-store\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Content-Security-Policy: default-src 'none'; style-src 'unsafe-inline'; form-action 'self'; frame-ancestors "
    "'none'\r\n\r\n";

constexpr char kTop[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Warrenby server status</title>\n"
    "<style>body{font-family:sans-serif}td,th{text-align:left;padding:0 1em 0 0}td.n{text-align:right}</style>\n"
    "</head>\n<body>\n<h1>Warrenby server status</h1>\n";

constexpr char kBottom[] = "</body>\n</html>";

void PutTop(CPutStream& out, const Outcome& outcome) {
    out << "Status: " << outcome.status << "\r\n" << kHeaders << kTop;
    if (!outcome.message.empty()) {
        out << "<p id=\"message\"><strong>";
        out.Send(outcome.message.c_str(), true);
        out << "</strong></p>\n";
    }
}

}  // namespace

void PutCell(CPutStream& out, const std::wstring& text) {
    out << "<td>";
    out.Send(text.c_str(), true);
    out << "</td>";
}

void PutMessagePage(CPutStream& out, const Outcome& outcome) {
    PutTop(out, outcome);
    out << kBottom << endl;
}

void PutStatusPage(CPutStream& out, const Outcome& outcome, CINICache& scanIni, CINICache& serverIni) {
    PutTop(out, outcome);
    PutCounterTable(out);
    PutTicketTable(out, scanIni, serverIni);
    PutScanForm(out, scanIni);
    out << kBottom << endl;
}

}  // namespace wrb
