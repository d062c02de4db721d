#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>

#include "Console.h"
#include "CounterLook.h"
#include "Failure.h"
#include "HomeCheck.h"
#include "HomeFolder.h"
#include "JsonText.h"
#include "ServerStatus.h"
#include "Subcommands.h"
#include "Text.h"
#include "Version.h"
#include "ZipFile.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl diagnostics server.zip
  wrbctl diagnostics server.zip --log C:\Warrenby\Log\wrbdebug.log

The archive has the status, the version, the counters, what 'wrbctl check' finds, both INI files with their secrets
masked and the end of the log. Read it before you pass it on: texts of the log may name computers and users.

Exit codes: 0 done, 1 cannot write the file, 2 wrong command line.
)";

constexpr std::streamoff kLogTail = 1 << 20;

struct DiagnosticsOptions {
    std::string file;
    std::string log;
};

std::optional<std::string> ReadFrom(const std::filesystem::path& path, std::streamoff most) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) {
        return std::nullopt;
    }
    const std::streamoff start = std::max<std::streamoff>(0, static_cast<std::streamoff>(file.tellg()) - most);
    file.seekg(start);
    std::string text(std::istreambuf_iterator<char>(file), {});
    if (start != 0) {
        text.erase(0, text.find_first_of("\r\n"));  // without its begin nobody knows what the line says
    }
    return text;
}

// Keys, passwords and accounts, also those inside a connection string.
bool IsSecret(std::string line) {
    std::ranges::transform(line, line.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    const std::string key = line.substr(0, line.find('='));
    const auto holds = [](const std::string& text, std::initializer_list<const char*> parts) {
        return std::ranges::any_of(parts, [&](const char* part) { return text.find(part) != text.npos; });
    };
    return holds(key, {"key", "pwd", "pass", "login", "user", "account", "token", "secret"}) ||
           holds(line, {"odbc:", "pwd=", "password="});
}

std::string MaskSecrets(std::string_view ini) {
    std::string masked;
    if (ini.find('\0') != ini.npos) {
        return "left out: it is UTF-16 or binary\n";
    }
    while (!ini.empty()) {
        const std::string_view line = ini.substr(0, ini.find_first_of("\r\n"));
        ini.remove_prefix(line.size());
        ini.remove_prefix(ini.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, ini.size()));
        const std::size_t equals = line.find('=');
        const bool hides = equals != line.npos && IsSecret(std::string(line));
        masked.append(hides ? line.substr(0, equals + 1) : line).append(hides ? "********\n" : "\n");
    }
    return masked;
}

std::string CountersText() {
    CounterReader reader;
    uint32_t error = 0;
    const CounterAttach result = reader.Attach(error);
    return result == CounterAttach::Attached ? CounterJson(LookAtCounters(reader, false), nullptr)
                                             : WideToUtf8(CounterAttachText(result)) + "\n";
}

std::string FindingsText(const std::wstring& home) {
    std::string text;
    for (const IniFinding& finding : CheckHomeFolder(home)) {
        text += finding.file + ":" + std::to_string(finding.line) + ": " + (finding.isError ? "error: " : "warning: ") +
                finding.text + "\n";
    }
    return text;
}

int RunDiagnostics(const DiagnosticsOptions& options) {
    const std::wstring home = HomeFolder();
    ZipFile zip;
    zip.Add("version.txt", VersionText("wrbctl") + "\n");
    zip.Add("status.json", JsonText(StatusJson(ReadServerStatus())));
    zip.Add("counters.json", CountersText());
    zip.Add("check.txt", FindingsText(home));
    constexpr std::pair<const char*, const wchar_t*> kInis[] = {{"wrbscan.ini", kScanIniFile},
                                                                {"wrbserver.ini", kServerIniFile}};
    for (const auto& [name, file] : kInis) {
        if (const auto bytes = ReadFrom(home + file, kLogTail)) {
            zip.Add(name, MaskSecrets(*bytes));
        }
    }
    if (!options.log.empty()) {
        zip.Add("log.txt", ReadFrom(Utf8ToWide(options.log), kLogTail).value_or(""));
    }
    std::ofstream out(std::filesystem::path(Utf8ToWide(options.file)), std::ios::binary | std::ios::trunc);
    out << zip.Bytes();
    out.close();
    if (const unsigned long error = _doserrno; !out) {
        return FailSystem(kExitFailed, "cannot write " + options.file, error);
    }
    PrintOut("wrote " + options.file + "; read it before you pass it on\n");
    return kExitOk;
}

}  // namespace

void AddDiagnostics(CLI::App& app, Run& run) {
    const auto options = std::make_shared<DiagnosticsOptions>();
    CLI::App* const diagnostics = AddSubcommand(app, "diagnostics", "Collect the data for a support case in a ZIP file",
                                                kExamples, options, RunDiagnostics, run);
    diagnostics->add_option("file", options->file, "ZIP file to make; an existing one is replaced")->required();
    diagnostics->add_option("--log", options->log, "Also the end of this log file")->check(CLI::ExistingFile);
}

}  // namespace wrb
