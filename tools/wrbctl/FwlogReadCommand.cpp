#include <windows.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "CheckPFWLogVersion.h"
#include "Console.h"
#include "Failure.h"
#include "Fwlog.h"
#include "Handle.h"
#include "JsonText.h"
#include "PfwLogJson.h"
#include "PfwLogReader.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl fwlog read fw.log
  wrbctl fwlog read fw.log --json | wrbctl fwlog write copy.log

Exit codes: 0 done, 1 records with wrong markers were read, 2 wrong command line or no such file.
)";

struct FwlogReadOptions {
    std::string file;
    bool json = false;  // JSON lines, as RunFwlogWrite takes them
};

std::string UtcTime(uint32_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm utc{};
    gmtime_s(&utc, &time);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &utc);
    return text;
}

// The texts come from the agent.
std::string Visible(const Json::Value& text) {
    return WideToUtf8(VisibleText(Utf8ToWide(text.asString())));
}

std::string TextLine(const Json::Value& line) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "  %3u %5u %5u %5u %5u  ", line["direction"].asUInt(),
                  line["protocol"].asUInt(), line["type"].asUInt(), line["subType"].asUInt(), line["port"].asUInt());
    std::string text = UtcTime(line["time"].asUInt()) + numbers + Visible(line["localHost"]) + " " +
                       Visible(line["remoteHost"]) + "  " + Visible(line["path"]) + "  " + Visible(line["info"]);
    return text + (line.isMember("head") ? "  WRONG MARKERS\n" : "\n");
}

// Returns how many records have wrong markers.
template <typename Item>
unsigned PrintRecords(HANDLE file, bool json) {
    unsigned wrong = 0;
    PfwLogReader reader(file, sizeof(Item));
    while (const void* const record = reader.Next()) {
        const Json::Value line = DecodePfwLogRecord(*static_cast<const Item*>(record));
        PrintOut(json ? JsonLine(line) + "\n" : TextLine(line));
        wrong += line.isMember("head") ? 1 : 0;
    }
    return wrong;
}

int RunFwlogRead(const FwlogReadOptions& options) {
    const FileHandle file(CreateFileW(Utf8ToWide(options.file).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        const DWORD error = GetLastError();
        return FailSystem(kExitUsage, "cannot open " + options.file, error);
    }
    const uint32_t size = GetFileSize(file.Get(), nullptr);
    const PfwLogVersion version = PfwLogVersionOfFile(file.Get(), size);
    if (version == PfwLogVersion::kUnknown) {
        return Fail(kExitUsage, options.file + " fits both versions by its size and neither by its markers");
    }
    if (!options.json) {
        PrintOut("time (UTC)           dir proto  type   sub  port  local remote  path  information\n");
    }
    const unsigned wrong = version == PfwLogVersion::kV0 ? PrintRecords<SWRB_PFW_LOG_ITEM_V0>(file.Get(), options.json)
                                                         : PrintRecords<SWRB_PFW_LOG_ITEM>(file.Get(), options.json);
    if (const uint32_t rest = size % PfwLogRecordSize(version); rest != 0) {
        PrintErr("wrbctl: the last record has only " + std::to_string(rest) + " bytes\n");
    }
    return wrong == 0 ? kExitOk : Fail(kExitFailed, std::to_string(wrong) + " record(s) with wrong markers");
}

}  // namespace

void AddFwlogRead(CLI::App& fwlog, Run& run) {
    const auto options = std::make_shared<FwlogReadOptions>();
    CLI::App* const read =
        AddSubcommand(fwlog, "read", "Show the records of a file", kExamples, options, RunFwlogRead, run);
    read->add_option("file", options->file, "Firewall log file of either version")->required();
    read->add_flag("--json", options->json, "Print JSON lines, as write takes them");
}

void AddFwlog(CLI::App& app, Run& run) {
    CLI::App* const fwlog = app.add_subcommand("fwlog", "Write and read firewall log files");
    fwlog->require_subcommand(1);
    AddFwlogWrite(*fwlog, run);
    AddFwlogRead(*fwlog, run);
}

}  // namespace wrb
