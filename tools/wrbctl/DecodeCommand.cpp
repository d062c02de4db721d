#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "Console.h"
#include "Decode.h"
#include "Failure.h"
#include "JsonText.h"
#include "RecordingFile.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl decode request.bin
  wrbctl decode monday.wrbrec --json
  wrbctl decode "04 00 00 00 01 00 00 00 10 00 00 00"

Takes a file, or bytes as hexadecimal digits, and finds out by their beginning what they are: commands, requests to the
services and their answers, lines for the log service, firewall logs, recordings, forms of gateway requests.

Exit codes: 0 done, 1 not all of it is understood, 2 wrong command line or no such file.
)";

constexpr std::size_t kMostBytes = 256u << 20;

struct DecodeOptions {
    std::string input;
    bool json = false;
};

// Pairs of digits, with blanks between them or not. Nothing: something else.
std::optional<std::vector<uint8_t>> HexBytes(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef0123456789ABCDEF";
    std::vector<uint8_t> bytes;
    std::size_t digits = 0;
    for (const char c : text) {
        const std::size_t digit = kDigits.find(c);
        if (digit == kDigits.npos) {
            if (c != ' ' || digits % 2 != 0) {
                return std::nullopt;
            }
            continue;
        }
        if (digits++ % 2 == 0) {
            bytes.push_back(static_cast<uint8_t>(digit % 16 << 4));
        } else {
            bytes.back() = static_cast<uint8_t>(bytes.back() | digit % 16);
        }
    }
    return digits == 0 || digits % 2 != 0 ? std::nullopt : std::optional(std::move(bytes));
}

void PrintFields(const Decoded& decoded) {
    TextTable table({L"offset", L"bytes", L"field", L"value"});
    for (const DecodedField& field : decoded.fields) {
        table.Add({FormatWide(L"%06llX", static_cast<unsigned long long>(field.offset)), std::to_wstring(field.bytes),
                   Utf8ToWide(field.name), field.value});
    }
    PrintOut(decoded.kind + "\n" + table.Text(TerminalColumns()));
}

Json::Value DecodedJson(const Decoded& decoded) {
    Json::Value json;
    json["kind"] = decoded.kind;
    json["problem"] = decoded.problem;
    Json::Value& fields = json["fields"] = Json::Value(Json::arrayValue);
    for (const DecodedField& field : decoded.fields) {
        Json::Value& row = fields.append(Json::objectValue);
        row["offset"] = static_cast<Json::UInt64>(field.offset);
        row["bytes"] = static_cast<Json::UInt64>(field.bytes);
        row["name"] = field.name;
        row["value"] = WideToUtf8(field.value);
    }
    return json;
}

int Show(std::span<const uint8_t> bytes, bool json) {
    if (bytes.size() > kMostBytes) {
        return Fail(kExitUsage, "longer than 256 MiB");
    }
    const Decoded decoded = Decode(bytes);
    json ? PrintJson(DecodedJson(decoded)) : PrintFields(decoded);
    return decoded.problem.empty() ? kExitOk : Fail(kExitFailed, decoded.problem);
}

int RunDecode(const DecodeOptions& options) {
    const std::wstring path = Utf8ToWide(options.input);
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        const auto bytes = HexBytes(options.input);
        return bytes ? Show(*bytes, options.json)
                     : Fail(kExitUsage, options.input + " is neither a file nor hexadecimal digits in pairs");
    }
    try {
        const FileView file(path);
        return Show(file.Bytes(), options.json);
    } catch (const std::runtime_error& error) {
        return Fail(kExitUsage, options.input + ": " + error.what());
    }
}

}  // namespace

void AddDecode(CLI::App& app, Run& run) {
    const auto options = std::make_shared<DecodeOptions>();
    CLI::App* const decode =
        AddSubcommand(app, "decode", "Show a message field by field", kExamples, options, RunDecode, run);
    decode->add_option("input", options->input, "File, or hexadecimal digits")->required();
    decode->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
