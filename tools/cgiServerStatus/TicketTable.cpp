#include "StatusPage.h"

namespace wrb {
namespace {

constexpr char kTicketSection[] = "LOG_TICKET_SECTION";

void PutSetting(CPutStream& out, const char* file, const char* key, int32_t value) {
    out << "<tr><td>" << file << "</td><td>" << key << "</td><td class=\"n\">" << value << "</td></tr>\n";
}

}  // namespace

void PutTicketTable(CPutStream& out, CINICache& scanIni, CINICache& serverIni) {
    const auto scan = [&](const char* section, const char* key, int32_t defaultValue) {
        const auto value = static_cast<int32_t>(scanIni.readINIInt(section, key, defaultValue));
        PutSetting(out, "wrbscan.ini", key, value);
        return value;
    };
    out << "<h2>Log-upload ticket</h2>\n<table id=\"ticket\">\n<tr><th>file</th><th>key</th><th>value</th></tr>\n";
    const bool inForce = scan("Global Setting", "EnablePFWLogUploadingTicket", -1) == 1;
    const int32_t fixedThreads = scan("INI_SERVER_SECTION", "Command_Handler_Static_Thread_Number", 20);
    const int32_t mostThreads = scan("INI_SERVER_SECTION", "Command_Handler_Maxium_Thread_Number", 40);
    const struct {
        const char* key;
        int32_t defaultValue;
    } settings[] = {
        {"NumberOfConcurrentLogUploadingClient", fixedThreads},
        {"NumberOfMaxConcurrentLogUploadingClient", mostThreads},
        {"NumberOfMaxProcessingLogInSec", 4},
        {"MaxWaitTime", 1800},
        {"MaxUploadTime", 60},
        {"MinClearListFrequencyInSec", 60},
    };
    for (const auto& [key, defaultValue] : settings) {
        PutSetting(out, "wrbserver.ini", key,
                   static_cast<int32_t>(serverIni.readINIInt(kTicketSection, key, defaultValue)));
    }
    out << "</table>\n<p>The ticket is " << (inForce ? "in force.</p>\n" : "off: every upload is admitted.</p>\n");
}

}  // namespace wrb
