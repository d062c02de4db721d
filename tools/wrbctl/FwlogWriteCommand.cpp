#include <json/reader.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "Failure.h"
#include "Fwlog.h"
#include "PfwLogJson.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl fwlog write fw.log < records.jsonl
  wrbctl fwlog write --version 0 old.log < records.jsonl

A line of records.jsonl:
  {"time":1700000000,"port":443,"localHost":"10.0.0.5","path":"C:\\a.exe"}

Exit codes: 0 done, 1 cannot write the file, 2 wrong command line or input.
)";

// The version of the whole file: the requested one, else that of the first record.
class FileVersion {
  public:
    explicit FileVersion(std::optional<uint32_t> asked) : m_version(asked) {}

    uint32_t Of(const JsonNode& line) {
        const auto member = line.Member("version");
        const uint32_t version = member ? member->Number() : m_version.value_or(1);
        if (version > 1) {
            member->Fail("must be 0 or 1");
        }
        if (m_version && version != *m_version) {
            member->Fail("this is a file of version " + std::to_string(*m_version));
        }
        m_version = version;
        return version;
    }

  private:
    std::optional<uint32_t> m_version;
};

template <typename Item>
void Append(const JsonNode& line, std::ostream& out) {
    const auto item = std::make_unique<Item>();
    EncodePfwLogRecord(line, *item);
    out.write(reinterpret_cast<const char*>(item.get()), sizeof(Item));
}

Json::Value Parse(const std::string& text) {
    static const Json::CharReaderBuilder builder = [] {
        Json::CharReaderBuilder strict;
        Json::CharReaderBuilder::strictMode(&strict.settings_);
        return strict;
    }();
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, nullptr) || !value.isObject()) {
        throw std::runtime_error("not a JSON object");
    }
    return value;
}

// The number of records. The message of an exception begins with the line number.
uint64_t WriteRecords(std::istream& in, std::ostream& out, FileVersion version) {
    uint64_t records = 0;
    std::string text;
    for (unsigned number = 1; std::getline(in, text); ++number) {
        if (text.find_first_not_of(" \t\r") == std::string::npos) {
            continue;
        }
        try {
            const Json::Value value = Parse(text);
            const JsonNode line(value);
            if (version.Of(line) == 0) {
                Append<SWRB_PFW_LOG_ITEM_V0>(line, out);
            } else {
                Append<SWRB_PFW_LOG_ITEM>(line, out);
            }
            ++records;
        } catch (const std::exception& error) {  // also of the JSON reader, which throws no runtime_error
            throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
        }
    }
    return records;
}

}  // namespace

int RunFwlogWrite(const FwlogWriteOptions& options) {
    const std::filesystem::path path(Utf8ToWide(options.out));
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        const unsigned long error = _doserrno;
        return FailSystem(kExitFailed, "cannot create " + options.out, error);
    }
    std::string problem;
    std::ifstream file;
    if (!options.in.empty()) {
        file.open(std::filesystem::path(Utf8ToWide(options.in)), std::ios::binary);
    }
    uint64_t records = 0;
    try {
        records = WriteRecords(options.in.empty() ? std::cin : file, out, FileVersion(options.version));
    } catch (const std::exception& error) {
        problem = error.what();
    }
    out.close();
    if (problem.empty() && out) {
        if (options.records != nullptr) {
            *options.records = records;
        }
        return kExitOk;
    }
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    return problem.empty() ? Fail(kExitFailed, "cannot write " + options.out) : Fail(kExitUsage, problem);
}

void AddFwlogWrite(CLI::App& fwlog, Run& run) {
    const auto options = std::make_shared<FwlogWriteOptions>();
    CLI::App* const write = AddSubcommand(fwlog, "write", "Make a file from JSON lines on the standard input",
                                          kExamples, options, RunFwlogWrite, run);
    write->add_option("--version", options->version, "Version of the records (default: that of the first, or 1)")
        ->check(CLI::Range(0u, 1u));
    write->add_option("out", options->out, "File to make")->required();
}

}  // namespace wrb
