#include "HomeCheck.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "AlertFiles.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "StringProtection.h"
#include "Text.h"
#include "TicketSettings.h"

namespace wrb {
namespace {

constexpr std::size_t kAlertBytes = 4096;  // that the server reads of an alert text

std::optional<std::string> ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::optional(std::string(std::istreambuf_iterator<char>(file), {})) : std::nullopt;
}

void CheckAlertText(const std::string& file, std::string_view bytes, std::vector<IniFinding>& findings) {
    const auto report = [&](bool isError, const char* text) { findings.push_back({isError, file, 0, text}); };
    if (bytes.starts_with(kUtf8Mark) || (!bytes.empty() && bytes.find('\0') == bytes.npos)) {
        report(true, "is not UTF-16; agents would get it unreadable");
    } else if (bytes.starts_with(kUtf16Mark)) {
        report(false, "begins with a UTF-16 mark, which agents get as a character");
    }
    if (bytes.size() > kAlertBytes) {
        report(false, "is longer than 4096 bytes; the rest is not read");
    }
}

IniFinding ServerIniWarning(std::string text) {
    return {false, WideToUtf8(kServerIniFile), 0, std::move(text)};
}

// A key that is wrong is an error of its line.
void CheckKeyIsThere(CINICache& serverIni, std::vector<IniFinding>& findings) {
    wchar_t first[2];
    if (serverIni.readINIString(first, kProtectionKeySection, kProtectionKeyName, L"", 2) == 0) {
        findings.push_back(
            ServerIniWarning("has no " + WideToUtf8(kProtectionKeyName) +
                             ": agents with addresses get no web-threat settings; make one with wrbctl make-key"));
    }
}

// Limits that are never reached because another one is lower.
void CheckTicket(CINICache& scanIni, CINICache& serverIni, std::vector<IniFinding>& findings) {
    const TicketSettings ticket(scanIni, serverIni);
    const TicketThreads threads = ticket.Threads();
    const char* const section = "LOG_TICKET_SECTION";
    for (const TicketSetting setting : {TicketSetting::Free, TicketSetting::Ahead}) {
        const char* const key = TicketSettings::Key(setting);
        const uint32_t asked = serverIni.readINIInt(section, key, 0);
        if (asked > threads.maximum) {
            findings.push_back(ServerIniWarning(std::string(key) + " is " + std::to_string(asked) + ", but counts as " +
                                                std::to_string(threads.maximum) +
                                                ", the Command_Handler_Maxium_Thread_Number"));
        }
    }
    if (ticket.Read(TicketSetting::Ahead, threads) < ticket.Read(TicketSetting::Free, threads)) {
        findings.push_back(ServerIniWarning(
            "NumberOfMaxConcurrentLogUploadingClient is below NumberOfConcurrentLogUploadingClient and "
            "has no effect"));
    }
}

}  // namespace

std::vector<IniFinding> CheckHomeFolder(const std::wstring& home) {
    std::vector<IniFinding> findings;
    constexpr std::pair<IniFile, const wchar_t*> kFiles[] = {{IniFile::Scan, kScanIniFile},
                                                             {IniFile::Server, kServerIniFile}};
    for (const auto& [kind, name] : kFiles) {
        if (const auto bytes = ReadFile(home + name)) {
            std::vector<IniFinding> more = CheckIni(kind, WideToUtf8(name), *bytes);
            std::ranges::move(more, std::back_inserter(findings));
        }
    }
    CINICache scanIni;
    CINICache serverIni;
    scanIni.init((home + kScanIniFile).c_str(), 0);
    serverIni.init((home + kServerIniFile).c_str(), 0);
    CheckKeyIsThere(serverIni, findings);
    CheckTicket(scanIni, serverIni, findings);
    for (const AlertFile& alert : kAlertFiles) {
        const std::wstring name = std::wstring(L"admin\\") + alert.name;
        if (const auto bytes = ReadFile(home + name)) {
            CheckAlertText(WideToUtf8(name), *bytes, findings);
        }
    }
    return findings;
}

}  // namespace wrb
