#include <string>

#include "StatusPage.h"
#include "TicketSettings.h"

namespace wrb {
namespace {

void PutSetting(CPutStream& out, const char* key, uint32_t value) {
    out << "<tr><td>" << key << "</td><td class=\"n\">" << std::to_string(value).c_str() << "</td></tr>\n";
}

}  // namespace

void PutTicketTable(CPutStream& out, CINICache& scanIni, CINICache& serverIni) {
    const TicketSettings settings(scanIni, serverIni);
    const TicketThreads threads = settings.Threads();
    out << "<h2>Log-upload ticket</h2>\n<table id=\"ticket\">\n<tr><th>setting</th><th>in force</th></tr>\n";
    for (uint32_t i = 0; i < static_cast<uint32_t>(TicketSetting::kCount); ++i) {
        const auto setting = static_cast<TicketSetting>(i);
        PutSetting(out, TicketSettings::Key(setting), settings.Read(setting, threads));
    }
    out << "</table>\n<p>The ticket is "
        << (settings.IsInForce() ? "in force.</p>\n" : "off: every upload is admitted.</p>\n");
}

}  // namespace wrb
